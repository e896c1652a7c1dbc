// Times the adult-history purge against the word-by-word purge it replaces, on two copies of one Chrome history
// database, and checks that both leave the very same table.
//
//   tidewell-bench-purge [--rows N] [--words N] [--dir DIR]
//
// Defaults: 1,000,000 rows of which 5% hold an adult word, 1,000 words, and a memory-backed folder when there is
// one (so neither run pays for disk syncs: the word-by-word purge makes one per deleted row).
#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "base/log.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/history_purge.hpp"
#include "layout/disk_layout.hpp"
#include "support/disk_builder.hpp"
#include "support/literal_purge.hpp"
#include "support/sample_disk.hpp"

namespace {

namespace fs = std::filesystem;

struct Options {
    std::size_t rows = 1000000;
    std::size_t words = 1000;
    std::string dir = fs::is_directory("/dev/shm") ? "/dev/shm" : "build";
};

const std::vector<std::string> kSyllables{"qa", "qe", "qi", "qo", "qu", "xa", "xe", "xi", "xo", "xu",
                                          "za", "ze", "zi", "zo", "zu", "ka", "ve", "ri", "lo", "nu"};

// The shipped list first, then made-up fragments up to the count. Every made-up one holds a q, x or z, letters
// the ordinary addresses below never use, so exactly the adult rows match.
std::vector<std::string> makeWords(std::size_t count, std::mt19937& random) {
    std::vector<std::string> words = tidewell::loadAdultWords()->words();
    if (words.size() > count) {
        words.resize(count);
    }
    while (words.size() < count) {
        std::string word = kSyllables[random() % 15];
        for (std::size_t i = 0, n = 2 + random() % 3; i < n; ++i) {
            word += kSyllables[random() % kSyllables.size()];
        }
        words.push_back(std::move(word));
    }
    return words;
}

std::vector<std::string> makeUrls(std::size_t rows, const std::vector<std::string>& words, std::mt19937& random) {
    const std::vector<std::string> hosts{"news.example.org",  "www.example.com",    "mail.example.net",
                                         "docs.example.org",  "shop.example.com",   "travel.example.net",
                                         "music.example.org", "recipes.example.com"};
    const std::vector<std::string> paths{
        "today",          "search?b=weather", "inbox",           "manual/intro.html", "cart",
        "flights/berlin", "albums/2026",      "bread/sourdough", "account/settings"};
    std::vector<std::string> urls;
    urls.reserve(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        std::string url = "https://" + hosts[random() % hosts.size()] + "/" + paths[random() % paths.size()] +
                          fmt::format("/{}", random() % 100000);
        if (random() % 20 == 0) {
            std::string word = words[random() % words.size()];
            if (random() % 4 == 0) {
                for (char& c : word) {
                    c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
                }
            }
            url.insert(8, "www." + word + "-");
        }
        urls.push_back(std::move(url));
    }
    return urls;
}

double secondsOf(const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        if (flag == "--rows") {
            options.rows = std::stoul(argv[i + 1]);
        } else if (flag == "--words") {
            options.words = std::stoul(argv[i + 1]);
        } else if (flag == "--dir") {
            options.dir = argv[i + 1];
        } else {
            std::fprintf(stderr, "usage: tidewell-bench-purge [--rows N] [--words N] [--dir DIR]\n");
            return 2;
        }
    }
    tidewell::setLogSink([](std::string_view) {});
    fs::create_directories(options.dir);
    const tidewell::testing::TempFolder folder(fs::absolute(options.dir).string());
    const std::string original = folder.path() + "/History";
    const std::string literal = folder.path() + "/literal/History";
    const std::string tidewell = folder.path() + "/tidewell/History";

    std::mt19937 random(20261121);
    const std::vector<std::string> words = makeWords(options.words, random);
    fmt::print("purge bench: {} rows (5% adult), {} words, in {}\n", options.rows, words.size(), folder.path());
    std::fflush(stdout);
    tidewell::testing::writeHistoryDatabase(original, tidewell::testing::Browser::Chrome,
                                            makeUrls(options.rows, words, random));
    for (const std::string& copy : {literal, tidewell}) {
        fs::create_directories(fs::path(copy).parent_path());
        fs::copy_file(original, copy);
    }

    const double literalSeconds = secondsOf([&] { tidewell::testing::literalPurge(literal, "urls", words); });
    const tidewell::DeletionBoundary boundary(folder.path());
    const double tidewellSeconds = secondsOf([&] {
        tidewell::purgeHistory(
            *tidewell::findBrowser(tidewell::macosLayout(), "chrome")->history, tidewell::FileUrl{tidewell},
            tidewell::PurgeContext{tidewell::makeAdultWords(words), boundary, tidewell::CleanMode::Interactive});
    });

    const std::vector<std::string> expected = tidewell::testing::tableDump(literal, "urls");
    const bool equal = tidewell::testing::tableDump(tidewell, "urls") == expected;
    const double ratio = literalSeconds / tidewellSeconds;
    fmt::print("  rows deleted               {:10}\n", options.rows - expected.size());
    fmt::print("  word-by-word purge         {:10.3f} s\n", literalSeconds);
    fmt::print("  tidewell purge             {:10.3f} s\n", tidewellSeconds);
    fmt::print("  ratio (word-by-word / tidewell) {:7.1f}x   target >= 100x: {}\n", ratio,
               ratio >= 100.0 ? "met" : "NOT met");
    fmt::print("  final tables equal         {:>10}\n", equal ? "yes" : "NO");
    return equal ? 0 : 1;
}
