#include <gtest/gtest.h>

#include <random>

#include "inventory/inventories.hpp"
#include "layout/chrome_local_state.hpp"
#include "support/disk_builder.hpp"
#include "support/hostile_inputs.hpp"

namespace tidewell {
namespace {

using testing::DiskBuilder;
using testing::TempFolder;

// One document that every reader understands: as "Local State" it names the profile "Default", as a manifest
// "__MSG_n__" version 1, as messages it resolves that to "M", and as "extensions.json" it lists one add-on.
// Each reader is then fed the same damaged text.
const std::string kValid =
    R"({"profile":{"info_cache":{"Default":{"name":"P"}}},"name":"__MSG_n__","version":"1",)"
    R"("n":{"message":"M"},"addons":[{"defaultLocale":{"name":"A"},"version":"1","path":"/x"}]})";

std::string nested(std::size_t depth, std::string_view open, std::string_view close) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) {
        text += open;
    }
    for (std::size_t i = 0; i < depth; ++i) {
        text += close;
    }
    return text;
}

class JsonReaders : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder d{temp.path()};
    SizeCounter sizes{0};

    // Writes the text as all four files; gives the Chrome names and the number of Firefox add-ons read. A
    // readable "Local State" never gives null, whatever it holds.
    std::pair<std::vector<std::string>, std::size_t> readAll(std::string_view text) {
        const std::string version = "Library/Application Support/Google/Chrome/Default/Extensions/id/1_0/";
        d.text("Library/Application Support/Google/Chrome/Local State", text)
            .text(version + "manifest.json", text)
            .text(version + "_locales/en/messages.json", text)
            .text("Library/Application Support/Firefox/Profiles/p.default/extensions.json", text);
        const DiskLayout& layout = macosLayout();
        const std::optional<RecordList> chrome = chromeExtensions(d.disk(), *findBrowser(layout, "chrome"), sizes);
        EXPECT_TRUE(chrome.has_value());
        std::vector<std::string> names;
        for (const RecordPtr& record : chrome.value_or(RecordList{})) {
            names.push_back(record->text("nameExt"));
        }
        return {names, firefoxExtensions(d.disk(), *findBrowser(layout, "firefox"), sizes).size()};
    }
};

TEST_F(JsonReaders, WellFormedDocumentsAreReadWhateverTheirDepthOrByteOrderMark) {
    const std::string deepMember = kValid.substr(0, kValid.size() - 1) + ",\"deep\":" + nested(100'000, "[", "]") + "}";
    for (const std::string& text : {kValid, "\xEF\xBB\xBF" + kValid, deepMember}) {
        EXPECT_EQ(readAll(text), std::make_pair(std::vector<std::string>{"M"}, std::size_t{1}));
    }
}

TEST_F(JsonReaders, DamagedOrForeignDocumentsGiveNothing) {
    std::vector<std::string> damaged{
        nested(100'000, "[", "]"),
        nested(100'000, R"({"a":)", "}").insert(500'000, "1"),
        std::string(100'000, '['),
        R"({"version":1e400,)" + kValid.substr(1),
        kValid.substr(0, 30) + "\xFF\xFE" + kValid.substr(30),
        "{\"bad\":\"\xC0\xAF\"," + kValid.substr(1),
        R"({"lone":"\ud800",)" + kValid.substr(1),
        kValid + std::string(1, '\0') + "}",
        kValid + kValid,
    };
    for (std::size_t length = 0; length < kValid.size(); ++length) {
        damaged.push_back(kValid.substr(0, length)); // every truncation
    }
    for (const std::string& text : damaged) {
        EXPECT_EQ(readAll(text), std::make_pair(std::vector<std::string>{}, std::size_t{0})) << text.substr(0, 60);
    }
}

TEST_F(JsonReaders, WronglyTypedMembersReadAsEmptyText) {
    EXPECT_EQ(readAll(R"({"profile":{"info_cache":{"Default":"x","Other":null}},"name":["x"],"version":{}})").first,
              std::vector<std::string>{""});
    EXPECT_EQ(readAll(R"({"profile":{"info_cache":{"Default":{"name":1}}},"name":"__MSG_n__","n":"x","addons":"x"})"),
              std::make_pair(std::vector<std::string>{"__MSG_n__"}, std::size_t{0}));
    // An add-on whose location is not text has no place at all, and is left out.
    EXPECT_EQ(
        readAll(R"({"profile":[],"addons":[1,null,[],{"defaultLocale":"x","path":"/a","version":1e300},{"path":5}]})")
            .second,
        1U);
}

// "Local State"'s profiles come in file order, a key named twice keeping its first place and its last value, a
// second "profile" or "info_cache" replacing the first; a key that is not one plain folder name leaves its profile
// out, however many such keys there are.
TEST(ChromeLocalState, ProfilesComeInFileOrderAndKeysThatClimbAreLeftOut) {
    const auto folders = [](std::string_view text) {
        std::vector<std::pair<std::string, std::string>> out;
        for (const ChromeProfile& profile : chromeProfilesFromLocalState(text)) {
            out.emplace_back(profile.folder, profile.name);
        }
        return out;
    };
    using Profiles = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(folders(R"({"profile":{"info_cache":{"Z":{"name":"z"},"A":{"name":"a"},"Z":{"name":"z2"},"M":[]}}})"),
              (Profiles{{"Z", "z2"}, {"A", "a"}, {"M", ""}}));
    EXPECT_EQ(folders(R"({"profile":{"info_cache":{"A":{}}},"profile":{"x":1,"info_cache":{"B":{"name":"b"}}}})"),
              (Profiles{{"B", "b"}}));
    EXPECT_EQ(folders(R"({"profile":{"info_cache":{"A":{}},"info_cache":5}})"), Profiles{});
    EXPECT_EQ(folders(R"({"profile":{"info_cache":{"A":{"name":"a","name":["x"]},"B":{"name":{"name":"n"}}}}})"),
              (Profiles{{"A", ""}, {"B", ""}}));
    EXPECT_EQ(folders(testing::hostileLocalState(80000, 6, "Decoy/Evil")), (Profiles{{"Default", "Person 1"}}));
    EXPECT_EQ(folders(R"({"profile":{"info_cache":{"..\u0000":{},"a/b":{},".":{},"":{},"x\u0000y":{},"ok":{}}}})"),
              (Profiles{{"ok", ""}}));
}

TEST_F(JsonReaders, RandomlyMutatedDocumentsAreReadWithoutACrash) {
    std::mt19937 random(20261121);
    std::uniform_int_distribution<std::size_t> position(0, kValid.size() - 1);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int round = 0; round < 300; ++round) {
        std::string text = kValid;
        for (int flips = 1 + round % 3; flips > 0; --flips) {
            text[position(random)] = static_cast<char>(byte(random));
        }
        const auto [chrome, firefox] = readAll(text);
        EXPECT_LE(chrome.size() + firefox, 2U) << text;
    }
}

} // namespace
} // namespace tidewell
