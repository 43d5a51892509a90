#include <QApplication>

#include <gmock/gmock.h>

#include <csignal>

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    std::signal(SIGPIPE, SIG_IGN); // As the application does.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
