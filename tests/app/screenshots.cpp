// tidewell-screenshots FOLDER: renders Tidewell's windows offscreen into FOLDER as PNG files, so that their look can
// be checked without a display. Run by `make screenshots`.

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QPixmap>
#include <QStandardPaths>
#include <cstdio>

#include "app/app_delegate.hpp"
#include "app/not_access_vc.hpp"
#include "support/disk_builder.hpp"

namespace {

bool save(QWidget& window, const QString& file) {
    window.show();
    QApplication::processEvents();
    const bool saved = window.grab().save(file, "PNG");
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(file));
    return saved;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tidewell-screenshots FOLDER\n");
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QStandardPaths::setTestModeEnabled(true);
    QApplication app(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("Tidewell"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/tidewell.svg")));
    const QString folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);

    // A disk of the usual layout for ann, whose home the access window names.
    tidewell::testing::TempFolder temp;
    tidewell::testing::DiskBuilder disk(temp.path() + "/disk");
    disk.folder("Documents");
    tidewell::AppDelegate delegate(tidewell::AppEnvironment{disk.disk(),
                                                            QString::fromStdString(temp.path() + "/tidewell.conf"),
                                                            {temp.path() + "/autostart", "tidewell"},
                                                            false,
                                                            QString()});

    tidewell::NotAccessVC access(&delegate);
    return save(access, folder + QStringLiteral("/access-window.png")) ? 0 : 1;
}
