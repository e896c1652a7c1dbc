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
#include <QTimer>
#include <QToolButton>
#include <cstdio>
#include <functional>
#include <set>

#include "app/access_window.hpp"
#include "app/alerts.hpp"
#include "app/application.hpp"
#include "app/settings.hpp"
#include "platform/folder_grant.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "ui/bottom_bar.hpp"
#include "ui/browser_sheet.hpp"
#include "ui/compositing.hpp"
#include "ui/details_panel.hpp"
#include "ui/main_window.hpp"
#include "ui/popover.hpp"
#include "ui/section_card.hpp"
#include "ui/widgets.hpp"
#include "ui/window_clean.hpp"

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

int rowNamed(tidewell::CatalogueView& view, const std::string& name) {
    const tidewell::RecordList sections = view.catalogue().snapshot();
    for (std::size_t row = 0; row < sections.size(); ++row) {
        if (sections[row]->text("Name") == name) {
            return static_cast<int>(row);
        }
    }
    return -1;
}

} // namespace

namespace {

// The sample disk of a layout for ann in folder, granted, with the window shown at start (the taskbar entry kept)
// and no login item, on a desktop with a status area or without. The running applications are pretended: with
// Chrome and Firefox running a clean stops at the browser sheet and deletes nothing; with none it cleans the sample.
std::unique_ptr<tidewell::Application> openSampleDisk(const std::string& folder, const tidewell::DiskLayout& layout,
                                                      bool statusArea = true,
                                                      std::set<std::string> running = {"Google Chrome", "Firefox"}) {
    tidewell::testing::writeSampleDisk(folder + "/disk", "ann", layout);
    tidewell::testing::DiskBuilder disk(folder + "/disk", "ann", layout);
    const QString settingsFile = QString::fromStdString(folder + "/tidewell.conf");
    {
        tidewell::AppSettings settings(settingsFile);
        settings.setBool(tidewell::keys::kTaskbarEntry, true);
        settings.setBool(tidewell::keys::kRunAtStart, false);
        const auto grant = tidewell::createFolderGrant(disk.home());
        if (grant) {
            settings.setBytes(tidewell::keys::kHomeGrant, QByteArray::fromStdString(tidewell::grantToBytes(*grant)));
        }
    }
    auto application = std::make_unique<tidewell::Application>(
        tidewell::AppEnvironment{.disk = disk.disk(),
                                 .settingsFile = settingsFile,
                                 .loginItem = {folder + "/autostart", "tidewell"},
                                 .launchedAtLogin = false,
                                 .crashReportFolder = QString(),
                                 .statusAreaAvailable = [statusArea] { return statusArea; }});
    application->setMainWindowFactory(
        tidewell::mainWindowFactory({.builders = std::nullopt,
                                     .running = std::make_shared<tidewell::testing::FakeRunningApps>(
                                         std::initializer_list<std::set<std::string>>{running})}));
    application->start();
    return application;
}

// The main window of an application once its scan is done, shown at the top left; null if the scan never ended.
QWidget* scannedMainWindow(tidewell::Application& application) {
    QWidget* window = application.mainWindow();
    tidewell::CatalogueView* view = tidewell::catalogueViewOf(window);
    if (view == nullptr || !waitFor([&] { return view->scanDriver().scanDone(); })) {
        std::fprintf(stderr, "tidewell-screenshots: the main window did not finish its scan\n");
        return nullptr;
    }
    window->move(0, 0);
    window->show();
    return window;
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
    // Drawn as on a composited desktop, with rounded corners and the popover's arrow; the square look of a desktop
    // without a compositor has its own pictures below.
    tidewell::setDesktopCompositesForTesting(true);
    const QString folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);

    tidewell::testing::TempFolder temp;
    std::unique_ptr<tidewell::Application> linuxApplication =
        openSampleDisk(temp.path() + "/linux", tidewell::linuxLayout(), true, {});
    if (QWidget* linuxWindow = scannedMainWindow(*linuxApplication)) {
        save(folder + QStringLiteral("/main-window-linux.png"), *linuxWindow);
        // The confirmation over the window, with what and how much will go; No leaves everything as it is.
        QTimer::singleShot(300, [&] {
            if (QWidget* box = QApplication::activeModalWidget()) {
                save(folder + QStringLiteral("/confirmation.png"), *linuxWindow, box);
                QTest::keyClick(box, Qt::Key_Escape);
            }
        });
        tidewell::CatalogueView* linuxView = tidewell::catalogueViewOf(linuxWindow);
        linuxView->bottomBar()->cleanButton()->click();
        // Then the clean itself, no browser running, and the report sheet it ends with.
        tidewell::Alerts::answerNextAlert(tidewell::kAlertFirstButton);
        linuxView->bottomBar()->cleanButton()->click();
        if (!waitFor([&] { return linuxView->clean().report() != nullptr; })) {
            std::fprintf(stderr, "tidewell-screenshots: the clean showed no report\n");
            return 1;
        }
        QTest::qWait(200);
        save(folder + QStringLiteral("/report-sheet.png"), *linuxWindow, linuxView->clean().report());
        linuxView->clean().report()->close();
        linuxWindow->hide();
    } else {
        return 1;
    }
    std::unique_ptr<tidewell::Application> macosApplication =
        openSampleDisk(temp.path() + "/macos", tidewell::macosLayout());
    tidewell::Application& application = *macosApplication;
    QWidget* window = scannedMainWindow(application);
    if (window == nullptr) {
        return 1;
    }
    tidewell::CatalogueView* view = tidewell::catalogueViewOf(window);
    save(folder + QStringLiteral("/main-window.png"), *window);
    // The bottom bar's total follows the ticks: here with one section less.
    if (tidewell::SectionCard* card = view->cardAt(rowNamed(*view, "Chrome"))) {
        card->checkBox()->click();
        save(folder + QStringLiteral("/main-window-total.png"), *window);
        card->checkBox()->click();
    }

    for (const auto& [name, file] : {std::pair{"Chrome", "details-chrome.png"},
                                     std::pair{"Browser Extensions", "details-browser-extensions.png"}}) {
        view->showDetails(rowNamed(*view, name));
        save(folder + QLatin1Char('/') + QLatin1String(file), *window);
        view->detailsPanel()->finish();
    }

    tidewell::Alerts::answerNextAlert(tidewell::kAlertFirstButton);
    view->bottomBar()->cleanButton()->click();
    QTest::qWait(400); // the sheet's slide
    save(folder + QStringLiteral("/browser-panel.png"), *window);
    view->browserSheet()->end();

    const int adult = rowNamed(*view, "Adult History");
    if (tidewell::SectionCard* card = view->cardAt(adult)) {
        view->showAdultHistoryInfo(*card->infoButton());
        save(folder + QStringLiteral("/adult-history-popover.png"), *window,
             view->adultHistoryPopover()->popoverWindow());
        view->adultHistoryPopover()->close();
    }

    tidewell::AccessWindow access(application.folderAccess());
    access.move(0, 0);
    access.show();
    save(folder + QStringLiteral("/access-window.png"), access);
    access.hide();
    window->hide();

    // A desktop with neither a status area nor a compositor: the window is square and opaque and keeps its taskbar
    // entry (the hide box is off), and so is the Adult History popover.
    tidewell::setDesktopCompositesForTesting(false);
    std::unique_ptr<tidewell::Application> plainApplication =
        openSampleDisk(temp.path() + "/plain", tidewell::macosLayout(), false);
    QWidget* plainWindow = scannedMainWindow(*plainApplication);
    if (plainWindow == nullptr) {
        return 1;
    }
    save(folder + QStringLiteral("/main-window-no-tray.png"), *plainWindow);
    tidewell::CatalogueView* plainView = tidewell::catalogueViewOf(plainWindow);
    if (tidewell::SectionCard* card = plainView->cardAt(rowNamed(*plainView, "Adult History"))) {
        plainView->showAdultHistoryInfo(*card->infoButton());
        save(folder + QStringLiteral("/adult-history-popover-no-compositor.png"), *plainWindow,
             plainView->adultHistoryPopover()->popoverWindow());
        plainView->adultHistoryPopover()->close();
    }
    return g_allSaved ? 0 : 1;
}
