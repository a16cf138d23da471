#include <gtest/gtest.h>

#include <unistd.h>
#include <QApplication>
#include <cstdio>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);  // the window tests need widgets
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    std::fflush(stdout);
    ::_exit(result);
}
