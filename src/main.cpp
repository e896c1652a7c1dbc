// tidewell: the window application.

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QStandardPaths>
#include <QWidget>
#include <cstdio>

#include "app/app_delegate.hpp"
#include "app/real_time_purge.hpp"
#include "app/single_instance.hpp"
#include "catalogue/disk_root.hpp"
#include "platform/login_item.hpp"
#include "ui/main_window.hpp"
#include "version.hpp"

namespace {

constexpr int kExitUsage = 2;

int usageError(const QString& message) {
    std::fprintf(stderr, "tidewell: %s\n", message.toLocal8Bit().constData());
    return kExitUsage;
}

} // namespace

int main(int argc, char** argv) {
    QApplication::setApplicationName(QStringLiteral("tidewell"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tidewell"));
    QApplication::setApplicationVersion(QString::fromLatin1(tidewell::kVersion));
    QApplication::setDesktopFileName(QStringLiteral("tidewell"));
    QApplication app(argc, argv);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tidewell.svg")));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Tidewell finds and removes the privacy traces of browsers, mail, the system and the Flash "
                       "player."));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    const QCommandLineOption rootOption(QStringLiteral("root"),
                                        QStringLiteral("The disk to look at: any folder laid out like a macOS disk."),
                                        QStringLiteral("DIR"), QStringLiteral("/"));
    const QCommandLineOption userOption(QStringLiteral("user"),
                                        QStringLiteral("Whose home folder, <root>/Users/NAME, to look at."),
                                        QStringLiteral("NAME"));
    // Only the login item passes this: it tells the start-up that Tidewell was started at login.
    const QCommandLineOption autostartOption(QString::fromLatin1(tidewell::kAutostartArgument.substr(2)),
                                             QStringLiteral("Started at login (used by the login item)."));
    parser.addOptions({rootOption, userOption, autostartOption});
    if (!parser.parse(QApplication::arguments())) {
        return usageError(parser.errorText());
    }
    if (parser.isSet(helpOption)) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    if (parser.isSet(versionOption)) {
        std::printf("tidewell %s\n", tidewell::kVersion);
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return usageError(QStringLiteral("unexpected argument: %1").arg(parser.positionalArguments().front()));
    }
    const std::string user =
        parser.isSet(userOption) ? parser.value(userOption).toStdString() : tidewell::DiskRoot::processLoginName();
    auto disk = tidewell::DiskRoot::make(parser.value(rootOption).toStdString(), user);
    if (!disk) {
        return usageError(QString::fromStdString(disk.error()));
    }
    // A home that leads off the disk is refused; one not there yet is the access window's business.
    if (const auto home = disk->checkHome(); !home && !home.error().missing) {
        return usageError(QString::fromStdString(home.error().message));
    }

    const QString settingsFile = tidewell::AppSettings::defaultFile();
    tidewell::SingleInstance instance(tidewell::SingleInstance::serverNameFor(settingsFile));
    if (instance.handOverToRunningInstance()) {
        return 0;
    }

    // The login item always starts plain Tidewell on the user's own disk, as a login start should; --root and
    // --user are for looking at another disk on demand and stay off it.
    tidewell::AppEnvironment environment{
        *disk, settingsFile,
        tidewell::LoginItemPlace{tidewell::defaultAutostartFolder(), QApplication::applicationFilePath().toStdString()},
        parser.isSet(autostartOption),
        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/Crash Reports")};
    tidewell::AppDelegate delegate(std::move(environment));

    // Each hourly tick purges adult-site history inside the started grant; the purge's tasks run off the main
    // thread and are waited for when Tidewell ends (the purger goes before the delegate).
    tidewell::RealTimePurger purger(
        *disk, [&delegate] { return delegate.startedGrant(); }, tidewell::systemRunningApplications());
    delegate.setRealTimePurge([&purger] { purger.run(); });

    // The main window (the item table) and the browser panel are made by the delegate when it needs them.
    tidewell::installWindowFactories(delegate);

    QObject::connect(&instance, &tidewell::SingleInstance::reopenRequested, &delegate, [&delegate] {
        bool visible = false;
        for (const QWidget* window : QApplication::topLevelWidgets()) {
            visible = visible || window->isVisible();
        }
        delegate.applicationShouldHandleReopen(visible);
    });
    instance.listen();

    delegate.applicationDidFinishLaunching();
    return QApplication::exec();
}
