#include <gtest/gtest.h>

#include <unistd.h>
#include <QApplication>
#include <cstdio>

int main(int argc, char** argv) {
    // Some tests drive the real window; nothing needs a screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    std::fflush(stdout);
    std::fflush(stderr);
    ::_exit(result);
}
