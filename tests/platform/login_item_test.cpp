#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <sstream>

#include "platform/login_item.hpp"
#include "support/disk_builder.hpp"
#include "support/literal_purge.hpp"
#include "support/unprivileged.hpp"

namespace tidewell {
namespace {

using testing::TempFolder;

std::string execLine(const std::string& entry) {
    std::istringstream lines(entry);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("Exec=")) {
            return line.substr(5);
        }
    }
    return {};
}

TEST(LoginItemTest, TheEntryStartsTheProgramAtLoginWhateverItsPath) {
    const std::string entry = loginItemEntry("/usr/bin/tidewell");
    EXPECT_TRUE(entry.starts_with("[Desktop Entry]\n"));
    EXPECT_NE(entry.find("\nType=Application\n"), std::string::npos);
    EXPECT_EQ(execLine(entry), "\"/usr/bin/tidewell\" --autostart");

    // Quoted as desktop entries require: inside the quotes ", `, $ and \ take a backslash, which the entry's own
    // string escaping doubles; % is doubled; a line break cannot end the line.
    EXPECT_EQ(execLine(loginItemEntry("/opt/my apps/tide\"well`$x\\y%z")),
              R"("/opt/my apps/tide\\"well\\`\\$x\\\\y%%z" --autostart)");
    EXPECT_EQ(execLine(loginItemEntry("/opt/a\nb")), R"("/opt/a\nb" --autostart)");
}

TEST(LoginItemTest, OnWritesTheEntryAndOffRemovesIt) {
    TempFolder temp;
    const LoginItemPlace place{temp.path() + "/config/autostart", "/usr/bin/tidewell"};
    const std::string entry = place.autostartFolder + "/tidewell.desktop";

    ASSERT_TRUE(setLoginItemEnabled(place, true)) << "the autostart folder is made when missing";
    EXPECT_EQ(testing::fileBytes(entry), loginItemEntry("/usr/bin/tidewell"));
    ASSERT_TRUE(setLoginItemEnabled({place.autostartFolder, "/opt/tidewell"}, true)) << "replaced whole";
    EXPECT_EQ(testing::fileBytes(entry), loginItemEntry("/opt/tidewell"));
    struct stat info {};
    ASSERT_EQ(::stat(entry.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0644U);

    ASSERT_TRUE(setLoginItemEnabled(place, false));
    EXPECT_NE(::stat(entry.c_str(), &info), 0);
    EXPECT_TRUE(setLoginItemEnabled(place, false)) << "removing an entry that is not there succeeds";
}

TEST(LoginItemTest, AnEntryThatCannotBeWrittenOrRemovedIsAFailure) {
    TempFolder temp;
    testing::DiskBuilder disk(temp.path());
    // A file where the folder should be, and a folder where the entry should be: no rights get around these.
    disk.text("/blocked", "x").folder("/odd/tidewell.desktop/inside");
    EXPECT_FALSE(setLoginItemEnabled({disk.at("/blocked"), "/usr/bin/tidewell"}, true));
    EXPECT_FALSE(setLoginItemEnabled({disk.at("/odd"), "/usr/bin/tidewell"}, false));

    disk.folder("/readonly");
    ::chmod(temp.path().c_str(), 0755);
    ::chmod(disk.at("/readonly").c_str(), 0555);
    const LoginItemPlace readOnly{disk.at("/readonly"), "/usr/bin/tidewell"};
    const auto written = testing::runUnprivileged([&] { return std::int64_t{setLoginItemEnabled(readOnly, true)}; });
    ::chmod(disk.at("/readonly").c_str(), 0755);
    EXPECT_EQ(written, 0);
    EXPECT_EQ(::access(disk.at("/readonly/tidewell.desktop").c_str(), F_OK), -1) << "no half-written entry left";
}

TEST(LoginItemTest, TheAutostartFolderFollowsTheSessionsConfigurationFolder) {
    const char* saved = std::getenv("XDG_CONFIG_HOME");
    const std::string previous = saved != nullptr ? saved : "";
    ::setenv("XDG_CONFIG_HOME", "/cfg", 1);
    EXPECT_EQ(defaultAutostartFolder(), "/cfg/autostart");
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("HOME", std::getenv("HOME") != nullptr ? std::getenv("HOME") : "/root", 1);
    EXPECT_EQ(defaultAutostartFolder(), std::string(std::getenv("HOME")) + "/.config/autostart");
    if (saved != nullptr) {
        ::setenv("XDG_CONFIG_HOME", previous.c_str(), 1);
    } else {
        ::unsetenv("XDG_CONFIG_HOME");
    }
}

} // namespace
} // namespace tidewell
