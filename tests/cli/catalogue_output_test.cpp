#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "base/byte_count.hpp"
#include "base/file_url.hpp"
#include "cli/cli.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/disk_oracle.hpp"
#include "support/fake_running_apps.hpp"
#include "support/tool_run.hpp"

namespace tidewell::cli {
namespace {

namespace fs = std::filesystem;

using testing::allocatedBelow;
using testing::pathOfUrl;
using testing::ToolRun;

const std::string kReplacement = "\xEF\xBF\xBD"; // U+FFFD in UTF-8

class CatalogueOutput : public ::testing::Test {
protected:
    ToolRun run(const std::string& root, std::vector<std::string> args) {
        args.insert(args.begin(), {"--root", root, "--user", "ann"});
        std::ostringstream out;
        std::ostringstream err;
        std::istringstream in;
        CliIo io{out, err, in, false, &nothingRuns, [](std::chrono::seconds) {}};
        const int status = runCli(args, io);
        return {status, out.str(), err.str()};
    }

    testing::TempFolder temp;
    testing::FakeRunningApps nothingRuns{{}};
};

// A disk whose own path, and names on it, are not UTF-8 (Latin-1 bytes): the JSON is valid, each such byte reads
// U+FFFD, and every location, a percent-encoded file URL, names exactly the bytes on disk.
TEST_F(CatalogueOutput, JsonWritesNamesThatAreNotUtf8WithReplacementsAndKeepsLocationsExact) {
    for (const DiskLayout* layout : {&macosLayout(), &linuxLayout()}) {
        SCOPED_TRACE(layout->name);
        const std::string root = temp.path() + "/" + std::string(layout->name) + "-caf\xE9";
        testing::DiskBuilder d(root, "ann", *layout);
        std::string oddName;
        std::string oddLocation;
        if (layout == &macosLayout()) {
            d.app("/Applications/Safari.app").file("Library/Safari/Extensions/Clip\xFF.safariextz", 3000);
            oddName = "Clip" + kReplacement;
            oddLocation = d.at("Library/Safari/Extensions/Clip\xFF.safariextz");
        } else {
            d.text(".mozilla/firefox/profiles.ini", "[Profile0]\nName=caf\xE9\nIsRelative=1\nPath=a\xE9.default\n"
                                                    "\n[Profile1]\nName=work\nIsRelative=1\nPath=b.default\n")
                .file(".mozilla/firefox/a\xE9.default/cookies.sqlite", 3000)
                .folder(".mozilla/firefox/b.default");
            oddName = "Cookies (caf" + kReplacement + ")";
            oddLocation = d.at(".mozilla/firefox/a\xE9.default/cookies.sqlite");
        }
        for (const std::vector<std::string>& args :
             {std::vector<std::string>{"scan", "--json", "--tick", "Browser Extensions"},
              std::vector<std::string>{"clean", "--yes", "--json", "--untick", "System", "--tick", "Browser Extensions"}}) {
            SCOPED_TRACE(args.front());
            const ToolRun ran = run(root, args);
            ASSERT_EQ(ran.status, 0) << ran.err;
            nlohmann::json catalogue;
            ASSERT_NO_THROW(catalogue = nlohmann::json::parse(ran.out)) << ran.out;
            bool nameSeen = false;
            std::set<std::string> urls;
            for (const auto& section : catalogue) {
                if (section.contains("Img")) {
                    EXPECT_EQ(section["Img"].get<std::string>().find('\xE9'), std::string::npos);
                }
                for (const auto& item : section.value("List", nlohmann::json::array())) {
                    nameSeen = nameSeen || item["NameText"] == oddName;
                    for (const auto& url : item.value("AllList", nlohmann::json::array())) {
                        urls.insert(url.get<std::string>());
                        EXPECT_EQ(FileUrl{pathOfUrl(url.get<std::string>())}.text(), url.get<std::string>());
                    }
                }
            }
            if (args.front() == "scan") {
                EXPECT_TRUE(nameSeen) << ran.out;
                EXPECT_TRUE(urls.contains(FileUrl{oddLocation}.text())) << ran.out;
                EXPECT_NE(FileUrl{oddLocation}.text().find("%"), std::string::npos);
            }
        }
        // The clean removed the odd location it listed.
        EXPECT_FALSE(fs::exists(oddLocation));
    }
}

// The Total line: each byte once however the locations nest, "0 byte" for nothing, and the sections alone counted.
TEST_F(CatalogueOutput, TotalCountsEachByteOnceWritesSizesAsSectionsDoAndCountsSections) {
    for (const DiskLayout* layout : {&macosLayout(), &linuxLayout()}) {
        SCOPED_TRACE(layout->name);
        const std::string empty = temp.path() + "/empty-" + std::string(layout->name);
        testing::DiskBuilder(empty, "ann", *layout).folder("");
        const ToolRun nothing = run(empty, {"--layout", std::string(layout->name), "scan"});
        ASSERT_EQ(nothing.status, 0) << nothing.err;
        // Adult History, Browser Extensions and System are there on any disk; the promotion row is not a section.
        EXPECT_TRUE(nothing.out.ends_with("\nTotal: 0 byte in 3 sections\n")) << nothing.out;

        const std::string root = temp.path() + "/sample-" + std::string(layout->name);
        testing::writeSampleDisk(root, "ann", *layout);
        const ToolRun json = run(root, {"scan", "--json"});
        ASSERT_EQ(json.status, 0) << json.err;
        std::vector<std::string> places;
        std::size_t sections = 0;
        for (const auto& section : nlohmann::json::parse(json.out)) {
            sections += section.contains("Name") ? 1U : 0U;
            if (section.value("Name", "") == "Browser Extensions") {
                continue; // its rows are not measured
            }
            for (const auto& item : section.value("List", nlohmann::json::array())) {
                for (const auto& url : item.value("AllList", nlohmann::json::array())) {
                    places.push_back(pathOfUrl(url.get<std::string>()));
                }
            }
        }
        std::ranges::sort(places);
        std::int64_t once = 0;
        std::int64_t repeated = 0;
        std::string last = "//";
        for (const std::string& place : places) {
            repeated += allocatedBelow(place);
            if (place != last && !place.starts_with(last + "/")) {
                once += allocatedBelow(place);
                last = place;
            }
        }
        ASSERT_LT(once, repeated) << "the sample disk nests locations";
        const ToolRun text = run(root, {"scan"});
        EXPECT_TRUE(text.out.ends_with("\nTotal: " + sizeTextFor(once).text + " in " + std::to_string(sections) +
                                       " sections\n"))
            << text.out;
        EXPECT_EQ(sections, 8U);
    }
}

// A location with a link on the way below the home: the scan measures what lies where the link leads, marks the
// item "(behind a link)" and leaves those bytes out of the total.
TEST_F(CatalogueOutput, ALocationBehindALinkIsMeasuredMarkedAndLeftOutOfTheTotal) {
    for (const DiskLayout* layout : {&macosLayout(), &linuxLayout()}) {
        SCOPED_TRACE(layout->name);
        const bool macos = layout == &macosLayout();
        const std::string root = temp.path() + "/linked-" + std::string(layout->name);
        testing::DiskBuilder d(root, "ann", *layout);
        const std::string caches = macos ? "Library/Caches/cache.db" : ".cache/cache.db";
        const std::string linked = macos ? "Library/Preferences/Macromedia" : ".macromedia";
        d.file(caches, 5000)
            .file("/elsewhere/flash/" + std::string(macos ? "Flash Player" : "Flash_Player") + "/big.sol", 80000)
            .link(linked, d.at("/elsewhere/flash"));
        if (macos) {
            d.app("/Applications/Utilities/Adobe Flash Player Install Manager.app");
        }
        const std::int64_t counted = allocatedBelow(d.at(caches));
        const std::int64_t there = allocatedBelow(d.at("/elsewhere/flash"));
        ASSERT_GT(there, counted);

        const ToolRun json = run(root, {"--layout", std::string(layout->name), "scan", "--json"});
        ASSERT_EQ(json.status, 0) << json.err;
        bool marked = false;
        for (const auto& section : nlohmann::json::parse(json.out)) {
            for (const auto& item : section.value("List", nlohmann::json::array())) {
                const std::string name = item["NameText"];
                const bool flash = section["Name"] == "Flash";
                EXPECT_EQ(name.ends_with(" (behind a link)"), flash) << name;
                if (flash) {
                    marked = true;
                    EXPECT_EQ(name, "Flash Cookies (behind a link)");
                    EXPECT_EQ(item["sizeText"], sizeTextFor(there).text);
                    EXPECT_EQ(section["Size"], "0 byte") << "the section's size leaves it out too";
                }
            }
        }
        EXPECT_TRUE(marked) << json.out;
        const ToolRun text = run(root, {"--layout", std::string(layout->name), "scan"});
        EXPECT_NE(text.out.find("\nTotal: " + sizeTextFor(counted).text + " in "), std::string::npos) << text.out;
    }
}

} // namespace
} // namespace tidewell::cli
