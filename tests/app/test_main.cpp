#include <gtest/gtest.h>

#include <QApplication>
#include <QStandardPaths>

namespace {

QtMessageHandler g_standardHandler = nullptr;

// The offscreen platform says, for every window raised, that it cannot raise windows; that is expected here.
void quietOffscreenNotes(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (message.startsWith(QStringLiteral("This plugin does not support"))) {
        return;
    }
    g_standardHandler(type, context, message);
}

} // namespace

// One QApplication for every window test, on the offscreen platform: no display is needed and none is touched.
int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // Nothing a test does may reach the real configuration or data folders.
    QStandardPaths::setTestModeEnabled(true);
    g_standardHandler = qInstallMessageHandler(quietOffscreenNotes);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tidewell-tests"));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
