#include <gtest/gtest.h>

#include <unistd.h>
#include <QGuiApplication>
#include <cstdio>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    std::fflush(stdout);
    ::_exit(result);
}
