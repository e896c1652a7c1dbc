// tidewell: the window application.

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QStandardPaths>
#include <cstdio>
#include <memory>
#include <string_view>

#include "app/application.hpp"
#include "app/real_time_purge.hpp"
#include "app/single_instance.hpp"
#include "layout/disk_root.hpp"
#include "platform/login_item.hpp"
#include "platform/purge_schedule.hpp"
#include "ui/main_window.hpp"
#include "version.hpp"

namespace {

constexpr int kExitUsage = 2;

// What the option list cannot say. The manual page is made from this help, so this is where it stays true.
constexpr const char* kHelpFooter = R"(
Tidewell lives in the status menu once started: "Real-time Scan Enabled/Disabled" switches the hourly purge of
adult-site history, "Open Main Console" brings the window back and "Quit" ends it. Starting tidewell again brings
the running one's window forward. While the systemd user timer of "tidewell-cli schedule on" runs the hourly purge,
the window's own hourly purge stays off.

Exit status:
  0  done, or the running Tidewell was brought forward
  2  usage error (one line on standard error)

Disk layouts:
  The disk is read in the fixed layout of a macOS or a Linux disk (--layout macos or linux), under the disk root
  (--root, "/" by default). With --layout auto, the default, it is a macOS disk when <root>/Users/NAME is a
  folder and a Linux disk otherwise. NAME is --user, or the login name of whoever runs tidewell (never $HOME).
  macOS: the home folder is <root>/Users/NAME; applications are looked for under <root>/Applications.
  Linux: the home folder is <root>/home/NAME, or without --root NAME's home in the user database (/etc/passwd).
  Tidewell reaches the home folder only through the folder its access window was granted, and removes nothing
  outside it. The login item of "Run at start" runs Tidewell on the user's own home.

Files:
  ~/.config/tidewell/tidewell.conf
      The settings and the folder grant.
  ~/.config/autostart/tidewell.desktop
      The login item of "Run at start": it starts "tidewell --autostart".
  ~/.local/share/tidewell/Crash Reports/
      What ended Tidewell when it crashed; reports stay on this computer.
  <prefix>/share/tidewell/adultWord.plist
      The word list of the purge, beside the program's folder: /usr/share/tidewell for /usr/bin/tidewell.
  ~/.config is $XDG_CONFIG_HOME and ~/.local/share is $XDG_DATA_HOME when these are set.
)";

int usageError(const QString& message) {
    std::fprintf(stderr, "tidewell: %s\n", message.toLocal8Bit().constData());
    return kExitUsage;
}

// The help and the version only print. They are answered by a plain core application, without the window's, so
// they work where there is no display (a console, a package build making the manual page).
bool asksOnlyForText(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument(argv[i]);
        if (argument == "--") {
            break;
        }
        for (const std::string_view text : {"-h", "-?", "--help", "--help-all", "-v", "--version"}) {
            if (argument == text) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

int main(int argc, char** argv) {
    QApplication::setApplicationName(QStringLiteral("tidewell"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tidewell"));
    QApplication::setApplicationVersion(QString::fromLatin1(tidewell::kVersion));
    QApplication::setDesktopFileName(QStringLiteral("tidewell"));
    const std::unique_ptr<QCoreApplication> app = asksOnlyForText(argc, argv)
                                                      ? std::make_unique<QCoreApplication>(argc, argv)
                                                      : std::make_unique<QApplication>(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Tidewell finds and removes the privacy traces of browsers, mail, the system and the Flash "
                       "player."));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    const QCommandLineOption rootOption(
        QStringLiteral("root"), QStringLiteral("The disk to look at: any folder laid out like a macOS or a Linux disk."),
        QStringLiteral("DIR"), QStringLiteral("/"));
    const QCommandLineOption userOption(
        QStringLiteral("user"),
        QStringLiteral("Whose home folder to look at: <root>/Users/NAME on macOS, <root>/home/NAME on Linux."),
        QStringLiteral("NAME"));
    const QCommandLineOption layoutOption(
        QStringLiteral("layout"),
        QStringLiteral("How the disk is laid out: macos, linux, or auto (macOS when <root>/Users/NAME is a folder)."),
        QStringLiteral("LAYOUT"), QStringLiteral("auto"));
    // Only the login item passes this: it tells the start-up that Tidewell was started at login.
    const QCommandLineOption autostartOption(QString::fromLatin1(tidewell::kAutostartArgument.substr(2)),
                                             QStringLiteral("Started at login (used by the login item)."));
    parser.addOptions({rootOption, userOption, layoutOption, autostartOption});
    if (!parser.parse(QCoreApplication::arguments())) {
        return usageError(parser.errorText());
    }
    if (parser.isSet(helpOption) || parser.isSet(QStringLiteral("help-all"))) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        std::fputs(kHelpFooter, stdout);
        return 0;
    }
    if (parser.isSet(versionOption)) {
        std::printf("tidewell %s\n", tidewell::kVersion);
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return usageError(QStringLiteral("unexpected argument: %1").arg(parser.positionalArguments().front()));
    }
    if (qobject_cast<QApplication*>(app.get()) == nullptr) {
        // "--help" or "--version" was taken as an option's value, so there is neither text to print nor a window.
        return usageError(QStringLiteral("--help and --version cannot be an option's value"));
    }
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tidewell.svg")));
    const std::string user =
        parser.isSet(userOption) ? parser.value(userOption).toStdString() : tidewell::DiskRoot::processLoginName();
    const std::string root = parser.value(rootOption).toStdString();
    auto disk = tidewell::DiskRoot::open(parser.isSet(rootOption) ? std::optional<std::string_view>(root) : std::nullopt,
                                         user, parser.value(layoutOption).toStdString());
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
    // The systemd timer of `tidewell-cli schedule on` purges the user's own home; only a window on that same home
    // leaves its hourly purge to it.
    if (disk->rootPrefix().empty() && disk->loginName() == tidewell::DiskRoot::processLoginName()) {
        environment.purgeUnitFolder = QString::fromStdString(tidewell::defaultUserUnitFolder());
    }
    tidewell::Application application(std::move(environment));

    // Each hourly tick purges adult-site history inside the started grant; the purge's tasks run off the main
    // thread and are waited for when Tidewell ends (the purger goes before the application).
    tidewell::RealTimePurger purger(
        *disk, [&application] { return application.cleaningGrant(); }, tidewell::systemRunningApplications());
    application.setRealTimePurge([&purger] { purger.run(); });

    // The main window is made by the application when it needs it.
    application.setMainWindowFactory(tidewell::mainWindowFactory());

    QObject::connect(&instance, &tidewell::SingleInstance::reopenRequested, &application,
                     &tidewell::Application::reopen);
    instance.listen();

    application.start();
    return QApplication::exec();
}
