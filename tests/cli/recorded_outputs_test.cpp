#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "sample_disk/sample_disk.hpp"
#include "support/tool_run.hpp"

namespace tidewell::cli {
namespace {

namespace fs = std::filesystem;

// What the sample disk prints, kept in tests/fixtures/sample-disk-outputs. A change that alters an output on
// purpose records them anew with scripts/record-outputs.sh and shows the difference in its commit.
struct RecordedRun {
    const char* file;
    std::vector<std::string> args;
};

const std::vector<RecordedRun> kRuns{
    {"scan.json", {"scan", "--json"}},
    {"scan.txt", {"scan"}},
    {"extensions.json", {"extensions", "--json"}},
    {"inventory-launch-agents.json", {"inventory", "launch-agents", "--json"}},
    {"inventory-launch-daemons.json", {"inventory", "launch-daemons", "--json"}},
    {"inventory-app-support.json", {"inventory", "app-support", "--json"}},
    {"inventory-apps.json", {"inventory", "apps", "--json"}},
};

// The order in which the file system lists the disk: folders are listed in that order, so outputs follow it. It
// is the same for every disk written on one file system, and may differ on another.
constexpr const char* kListingFile = "disk-listing.txt";

std::string listingOf(const fs::path& root) {
    std::string listing;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        listing += entry.path().lexically_relative(root).string() + '\n';
    }
    return listing;
}

std::string replacingAll(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::vector<std::string> sortedLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    std::ranges::sort(lines);
    return lines;
}

std::string contentsOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// With TIDEWELL_RECORD_OUTPUTS set to a folder, the outputs are written there instead of compared. The macOS
// sample disk's go to sample-disk-outputs, the Linux one's to sample-disk-outputs-linux.
TEST(RecordedOutputs, TheSampleDiskPrintsWhatWasRecorded) {
    for (const DiskLayout* layout : {&macosLayout(), &linuxLayout()}) {
        SCOPED_TRACE(layout->name);
        const std::string folder =
            std::string("sample-disk-outputs") + (layout == &macosLayout() ? "" : "-" + std::string(layout->name));
        const testing::TempFolder temp;
        testing::writeSampleDisk(temp.path() + "/disk", "ann", *layout);
        const std::string root = fs::canonical(temp.path() + "/disk").string();
        const char* recordInto = std::getenv("TIDEWELL_RECORD_OUTPUTS");
        const fs::path recorded = recordInto != nullptr ? fs::path(recordInto) / ".." / folder
                                                        : fs::path(TIDEWELL_FIXTURES) / folder;
        const std::string listing = listingOf(root);
        if (recordInto != nullptr) {
            fs::create_directories(recorded);
            std::ofstream(recorded / kListingFile, std::ios::binary) << listing;
        }
        // Elsewhere folders list in another order, and so do the outputs: then each output must still hold the
        // very lines recorded.
        const bool sameOrder = contentsOf(recorded / kListingFile) == listing;
        for (const RecordedRun& run : kRuns) {
            std::vector<std::string> args{"--root", root, "--user", "ann"};
            args.insert(args.end(), run.args.begin(), run.args.end());
            const testing::ToolRun ran = testing::runTool(args);
            EXPECT_EQ(ran.status, 0) << run.file << ": " << ran.err;
            const std::string output = replacingAll(ran.out, root, "<root>");
            if (recordInto != nullptr) {
                std::ofstream(recorded / run.file, std::ios::binary) << output;
            } else if (sameOrder) {
                EXPECT_EQ(output, contentsOf(recorded / run.file)) << run.file;
            } else {
                EXPECT_EQ(sortedLines(output), sortedLines(contentsOf(recorded / run.file))) << run.file;
            }
        }
    }
}

} // namespace
} // namespace tidewell::cli
