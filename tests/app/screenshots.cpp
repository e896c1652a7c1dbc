// tidewell-screenshots FOLDER: renders Tidewell's windows offscreen into FOLDER as PNG files, so that their look can
// be checked without a display. Run by `make screenshots`.
//
// The main window is the real one on the sample disk, driven as a person would: a scan, the details panels, a
// clean while two browsers run (their processes are pretended), and the Adult History info.

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>
#include <QToolButton>
#include <cstdio>
#include <functional>

#include "app/alerts.hpp"
#include "app/app_delegate.hpp"
#include "app/not_access_vc.hpp"
#include "app/settings.hpp"
#include "platform/folder_grant.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "support/sample_disk.hpp"
#include "ui/main_window.hpp"
#include "ui/popover.hpp"
#include "ui/tools_cell.hpp"

namespace {

constexpr int kBackdropMargin = 28;
const QColor kBackdrop{226, 230, 233};

bool g_allSaved = true;

// The windows on a plain desk, so that their rounded corners, outline and the popover's arrow show.
void save(const QString& file, QWidget& window, QWidget* above = nullptr) {
    QApplication::processEvents();
    const QPixmap base = window.grab();
    QRect area(window.pos(), base.size() / base.devicePixelRatio());
    QPixmap top;
    if (above != nullptr) {
        top = above->grab();
        area = area.united(QRect(above->pos(), top.size() / top.devicePixelRatio()));
    }
    QPixmap shot(area.size() + QSize(2 * kBackdropMargin, 2 * kBackdropMargin));
    shot.fill(kBackdrop);
    QPainter painter(&shot);
    const QPoint origin = QPoint(kBackdropMargin, kBackdropMargin) - area.topLeft();
    painter.drawPixmap(origin + window.pos(), base);
    if (above != nullptr) {
        painter.drawPixmap(origin + above->pos(), top);
    }
    painter.end();
    const bool saved = shot.save(file, "PNG");
    g_allSaved = g_allSaved && saved;
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(file));
}

bool waitFor(const std::function<bool()>& done) {
    return QTest::qWaitFor(done, 20000);
}

int rowNamed(tidewell::ToolsViewController& controller, const std::string& name) {
    const tidewell::RecordList sections = controller.catalogue().snapshot();
    for (std::size_t row = 0; row < sections.size(); ++row) {
        if (sections[row]->text("Name") == name) {
            return static_cast<int>(row);
        }
    }
    return -1;
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

    // The sample disk for ann, granted, with the window shown at start (the taskbar entry kept).
    tidewell::testing::TempFolder temp;
    tidewell::testing::writeSampleDisk(temp.path() + "/disk", "ann");
    tidewell::testing::DiskBuilder disk(temp.path() + "/disk");
    const QString settingsFile = QString::fromStdString(temp.path() + "/tidewell.conf");
    {
        tidewell::AppSettings settings(settingsFile);
        settings.setBool(tidewell::keys::kDockIcon, true);
        settings.setBool(tidewell::keys::kRunOnStart, false);
        const auto grant = tidewell::createFolderGrant(disk.home());
        if (grant) {
            settings.setData(tidewell::keys::kSaveDirectory, QByteArray::fromStdString(tidewell::grantToBytes(*grant)));
        }
    }
    tidewell::AppDelegate delegate(tidewell::AppEnvironment{
        disk.disk(), settingsFile, {temp.path() + "/autostart", "tidewell"}, false, QString()});
    // Chrome and Firefox pretend to run, so the clean stops at the browser panel and deletes nothing.
    tidewell::installWindowFactories(delegate,
                                     {.builders = std::nullopt,
                                      .running = std::make_shared<tidewell::testing::FakeRunningApps>(
                                          std::initializer_list<std::set<std::string>>{{"Google Chrome", "Firefox"}})});
    delegate.applicationDidFinishLaunching();

    QWidget* window = delegate.windCMain();
    tidewell::ToolsViewController* controller = tidewell::toolsViewControllerOf(window);
    if (controller == nullptr || !waitFor([&] { return controller->scanDriver().scanDone(); })) {
        std::fprintf(stderr, "tidewell-screenshots: the main window did not finish its scan\n");
        return 1;
    }
    window->move(0, 0);
    window->show();
    save(folder + QStringLiteral("/main-window.png"), *window);

    for (const auto& [name, file] : {std::pair{"Chrome", "details-chrome.png"},
                                     std::pair{"Browser Extensions", "details-browser-extensions.png"}}) {
        controller->showDetailsFor(rowNamed(*controller, name));
        save(folder + QLatin1Char('/') + QLatin1String(file), *window);
        controller->doneActionFromselectionView();
    }

    tidewell::Alerts::answerNextAlert(tidewell::kAlertFirstButtonReturn);
    controller->removeButton()->click();
    QTest::qWait(400); // the sheet's slide
    save(folder + QStringLiteral("/browser-panel.png"), *window);
    delegate.disMissPanel();

    const int adult = rowNamed(*controller, "Adult History");
    if (tidewell::ToolsCell* cell = controller->cellAt(adult)) {
        controller->adultHistoryInfoClick(*cell->infoButton());
        save(folder + QStringLiteral("/adult-history-popover.png"), *window,
             controller->adultHistoryPopover()->popoverWindow());
        controller->adultHistoryPopover()->closePopover();
    }

    tidewell::NotAccessVC access(&delegate);
    access.move(0, 0);
    access.show();
    save(folder + QStringLiteral("/access-window.png"), access);
    return g_allSaved ? 0 : 1;
}
