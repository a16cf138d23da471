#include <gtest/gtest.h>

#include <unistd.h>
#include <QCoreApplication>
#include <cstdio>

// Qt 6.4 can abort inside libpulse after main returns once a stream has been
// used; leave without running the static destructors.
int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    std::fflush(stdout);
    std::fflush(stderr);
    ::_exit(result);
}
