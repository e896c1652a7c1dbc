#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/alerts.hpp"
#include "app/application.hpp"
#include "app/settings.hpp"
#include "platform/folder_grant.hpp"
#include "support/disk_builder.hpp"
#include "ui/bottom_bar.hpp"
#include "ui/details_panel.hpp"
#include "ui/main_window.hpp"
#include "ui/section_card.hpp"
#include "ui/widgets.hpp"

namespace tidewell::testing {

/// A builder that appends a fresh section made by make (none when make gives null) and hands over.
inline SectionBuilder builderOf(std::function<RecordPtr()> make) {
    return [make = std::move(make)](ScanEnv&) { return BuilderOutcome{make(), 0, true}; };
}

/// An item as the item factory makes it, with a size text and measured; no locations unless given.
inline RecordPtr itemNamed(const std::string& name, bool header = true, Value checked = true, UrlList locations = {}) {
    return makeRecord({{"AllList", std::move(locations)},
                       {"NameText", name},
                       {"isChecked", std::move(checked)},
                       {"sizeText", std::string("1 KB")},
                       {"isExt", false},
                       {"isHeader", header},
                       {"isEnabled", true}});
}

/// A measured section of a source, as the builders make them.
inline RecordPtr sectionNamed(const std::string& name, RecordList items, bool enabled = true,
                              const std::string& img = "/Applications/Mail.app") {
    return makeRecord({{"Name", name},
                       {"List", std::move(items)},
                       {"Size", std::string(enabled ? "3 KB" : "0 byte")},
                       {"Img", img},
                       {"isChecked", true},
                       {"isEnabled", enabled},
                       {"isFromThornsweep", false}});
}

/// A section of n items named "<name> 1" to "<name> n".
inline RecordPtr sectionOfSize(const std::string& name, std::size_t n) {
    RecordList items;
    for (std::size_t i = 1; i <= n; ++i) {
        items.push_back(itemNamed(name + " " + std::to_string(i)));
    }
    return sectionNamed(name, std::move(items));
}

/// The promotion row.
inline RecordPtr promotionRow() {
    return makeRecord({{"Type", std::string("Scan")}});
}

/// Builders for sections of the given names, each with two items.
inline std::vector<SectionBuilder> sectionsNamed(const std::vector<std::string>& names) {
    std::vector<SectionBuilder> builders;
    for (const std::string& name : names) {
        builders.push_back(builderOf([name] { return sectionOfSize(name, 2); }));
    }
    return builders;
}

/// A granted disk for ann in a fresh temporary folder, and Tidewell started on it with the real main window
/// (shown, its taskbar entry kept) and builders and a running-application probe of the test's choosing.
class WindowFixture : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder disk{temp.path() + "/disk"};
    QString settingsFile = QString::fromStdString(temp.path() + "/config/tidewell.conf");
    /// The user's systemd unit folder as Tidewell watches it, for the purge timer of `tidewell-cli schedule`.
    std::string unitFolder = temp.path() + "/config/systemd/user";
    std::unique_ptr<Application> application;
    /// Whether the desktop has a status area (a tray host runs).
    bool statusArea = true;

    void SetUp() override {
        disk.folder("Documents");
        Alerts::resetSeam();
    }

    void TearDown() override {
        application.reset();
        Alerts::resetSeam();
    }

    /// Starts Tidewell and waits for its first scan to end.
    void launch(CatalogueViewOptions options = {}) {
        start(std::move(options));
        if (!HasFatalFailure()) {
            waitForScan();
        }
    }

    void launch(std::vector<SectionBuilder> builders) { launch(CatalogueViewOptions{std::move(builders), nullptr}); }

    /// Starts Tidewell; its first scan is under way.
    void start(CatalogueViewOptions options = {}) {
        AppSettings settings(settingsFile);
        settings.setBool(keys::kTaskbarEntry, true);
        settings.setBool(keys::kRunAtStart, false);
        const auto grant = createFolderGrant(disk.home());
        ASSERT_TRUE(grant);
        settings.setBytes(keys::kHomeGrant, QByteArray::fromStdString(grantToBytes(*grant)));
        application =
            std::make_unique<Application>(AppEnvironment{disk.disk(),
                                                         settingsFile,
                                                         {temp.path() + "/config/autostart", "/usr/bin/tidewell"},
                                                         false,
                                                         QString(),
                                                         QString::fromStdString(unitFolder),
                                                         [this] { return statusArea; }});
        application->setMainWindowFactory(mainWindowFactory(std::move(options)));
        application->start();
        ASSERT_NE(catalogueViewOf(application->mainWindow()), nullptr);
    }

    [[nodiscard]] QWidget& window() const { return *application->mainWindow(); }
    [[nodiscard]] CatalogueView& view() const { return *catalogueViewOf(application->mainWindow()); }
    [[nodiscard]] BottomBar& bar() const { return *view().bottomBar(); }
    [[nodiscard]] DetailsPanel& panel() const { return *view().detailsPanel(); }

    /// Waits until the running scan has ended (the event loop turns meanwhile).
    void waitForScan() const {
        ASSERT_TRUE(QTest::qWaitFor(
            [this] { return view().scanDriver().scanDone() && !view().scanDriver().scanRunning(); },
            60000));
    }

    [[nodiscard]] RecordPtr section(int row) const { return view().catalogue().at(static_cast<std::size_t>(row)); }
    [[nodiscard]] RecordPtr item(int row, std::size_t index) const { return section(row)->list("List")->at(index); }
    [[nodiscard]] SectionCard& card(int row) const {
        SectionCard* found = view().cardAt(row);
        EXPECT_NE(found, nullptr) << "no row " << row;
        return *found;
    }
    [[nodiscard]] DetailsRow& panelRow(int row) const {
        DetailsRow* found = panel().rowAt(row);
        EXPECT_NE(found, nullptr) << "no panel row " << row;
        return *found;
    }
    /// The row of the section of that name, or -1.
    [[nodiscard]] int rowNamed(const std::string& name) const {
        const RecordList sections = view().catalogue().snapshot();
        for (std::size_t row = 0; row < sections.size(); ++row) {
            if (sections[row]->text("Name") == name) {
                return static_cast<int>(row);
            }
        }
        return -1;
    }
    /// Runs what is queued on the main thread: layouts, the window's resizing, queued calls.
    static void settle() {
        for (int turn = 0; turn < 3; ++turn) {
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
        }
    }
    /// The "isChecked" of a record as a whole number (absent: 0).
    [[nodiscard]] static std::int64_t tick(const RecordPtr& record) { return record->number("isChecked").value_or(0); }
};

} // namespace tidewell::testing
