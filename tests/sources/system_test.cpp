#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "sources/builders.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

using testing::DiskBuilder;
using testing::itemAt;
using testing::itemNames;
using testing::locationPaths;
using testing::runBuilder;
using testing::TempFolder;

// Runs the test from a chosen current folder and goes back afterwards.
class InFolder {
public:
    explicit InFolder(const std::string& folder) : m_previous(::get_current_dir_name()) {
        EXPECT_EQ(::chdir(folder.c_str()), 0);
    }
    ~InFolder() {
        EXPECT_EQ(::chdir(m_previous), 0);
        std::free(m_previous);
    }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;

private:
    char* m_previous;
};

class OtherSections : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder d{temp.path() + "/disk"};
    const std::string containers = "Library/Containers";
};

TEST_F(OtherSections, SystemIsAlwaysThereWithItsSixItems) {
    d.file("Library/Caches/com.example/Cache.db", 8000).file("Library/Logs/x.log", 3000);
    const RecordPtr system = runBuilder(addSystemDetails, d.disk()).section;
    ASSERT_TRUE(system);
    EXPECT_EQ(system->text("Name"), "System");
    EXPECT_EQ(itemNames(*system),
              (std::vector<std::string>{"System Cache Files", "Applications Cache Files", "System Log Files",
                                        "Applications Log Files", "System Downloads Log", "Trash Files"}));
    EXPECT_EQ(locationPaths(itemAt(*system, 0)), std::vector<std::string>{d.at("Library/Caches")});
    EXPECT_EQ(locationPaths(itemAt(*system, 2)), std::vector<std::string>{d.at("Library/Logs")});
    EXPECT_EQ(system->text("Img"), d.at("/System/Library/CoreServices/Finder.app"));
    EXPECT_TRUE(system->flag("isEnabled"));
}

TEST_F(OtherSections, QuarantineRecordsMatchWithoutRegardToCase) {
    d.file("Library/Preferences/com.apple.LaunchServices.QuarantineEventsV2", 100)
        .file("Library/Preferences/COM.APPLE.LAUNCHSERVICES.QUARANTINEEVENTSV2-journal", 100)
        .file("Library/Preferences/com.apple.LaunchServices.plist", 100);
    const RecordPtr system = runBuilder(addSystemDetails, d.disk()).section;
    auto paths = locationPaths(itemAt(*system, 4));
    std::ranges::sort(paths);
    EXPECT_EQ(paths,
              (std::vector<std::string>{d.at("Library/Preferences/COM.APPLE.LAUNCHSERVICES.QUARANTINEEVENTSV2-journal"),
                                        d.at("Library/Preferences/com.apple.LaunchServices.QuarantineEventsV2")}));
}

TEST_F(OtherSections, ContainerAndTrashListingsNameNoFolderOfTheDisk) {
    d.file(containers + "/com.example.notes/Data/Library/Caches/index.db", 5000)
        .file(containers + "/com.example.notes/Data/Library/Logs/notes.log", 5000)
        .file(".Trash/old.txt", 5000);
    const RecordPtr system = runBuilder(addSystemDetails, d.disk()).section;
    for (const std::size_t item : {1U, 3U, 5U}) {
        EXPECT_TRUE(locationPaths(itemAt(*system, item)).empty()) << item;
        EXPECT_FALSE(itemAt(*system, item).flag("isHeader"));
        EXPECT_EQ(itemAt(*system, item).text("sizeText"), "0 byte");
        EXPECT_FALSE(itemAt(*system, item).flag("isEnabled"));
    }
}

TEST_F(OtherSections, ContainerListingsFollowTheUrlTextReadAsAPath) {
    // Where the URL text, read as a path from the current folder, does name a folder, its entries are listed, and
    // an entry ".DS_Store" of the containers folder is passed over while any other name counts as a container.
    d.file(containers + "/com.example.notes/Data/Library/Caches/index.db").file(containers + "/.DS_Store");
    d.file(containers + "/stray-file");
    const std::string cwd = temp.path() + "/cwd";
    const DiskRoot disk = d.disk();
    const std::string mirror = cwd + "/file:" + disk.inHome(containers).path;
    DiskBuilder(cwd)
        .file("/file:" + disk.inHome(containers).path + "/com.example.notes/Data/Library/Caches/a")
        .file("/file:" + disk.inHome(containers).path + "/.DS_Store/Data/Library/Caches/never")
        .file("/file:" + disk.inHome(containers).path + "/stray-file/Data/Library/Caches/b");
    const InFolder inside(cwd);
    EXPECT_EQ(urlTextAsPath(disk.inHome(containers)), mirror);
    const RecordPtr system = runBuilder(addSystemDetails, disk).section;
    auto paths = locationPaths(itemAt(*system, 1));
    std::ranges::sort(paths);
    EXPECT_EQ(paths, (std::vector<std::string>{mirror + "/com.example.notes/Data/Library/Caches/a",
                                               mirror + "/stray-file/Data/Library/Caches/b"}));
}

TEST_F(OtherSections, MailAndFlashNeedTheirApplications) {
    const std::string mail = "Library/Containers/com.apple.mail/Data/Library/";
    d.file(mail + "Mail Downloads/a.pdf", 9000).file(mail + "WebKit/x", 9000);
    d.file("Library/Caches/Adobe/Flash Player/c", 9000);
    EXPECT_FALSE(runBuilder(addMailAppDetails, d.disk()).section);
    EXPECT_FALSE(runBuilder(addAdobeFlashDetails, d.disk()).section);

    d.app("/Applications/Mail.app").app("/Applications/Utilities/Adobe Flash Player Install Manager.app");
    const RecordPtr mailSection = runBuilder(addMailAppDetails, d.disk()).section;
    ASSERT_TRUE(mailSection);
    EXPECT_EQ(itemNames(*mailSection), (std::vector<std::string>{"Mail Download", "Mail Cache Files"}));
    EXPECT_TRUE(itemAt(*mailSection, 0).flag("isChecked"));
    EXPECT_EQ(locationPaths(itemAt(*mailSection, 1)),
              (std::vector<std::string>{d.at(mail + "Caches"), d.at(mail + "Logs"), d.at(mail + "WebKit"),
                                        d.at(mail + "Saved Application State")}));

    const RecordPtr flash = runBuilder(addAdobeFlashDetails, d.disk()).section;
    ASSERT_TRUE(flash);
    EXPECT_EQ(itemNames(*flash), std::vector<std::string>{"Flash Cookies"});
    EXPECT_EQ(locationPaths(itemAt(*flash, 0)),
              (std::vector<std::string>{d.at("Library/Preferences/Macromedia/Flash Player"),
                                        d.at("Library/Caches/Adobe/Flash Player")}));
}

} // namespace
} // namespace tidewell
