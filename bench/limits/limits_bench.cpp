// What the largest inputs Tidewell accepts cost: the matcher of the largest word list (10 MB, 100,000 words of
// random letters, which share almost no beginnings) in memory and per address, and "Local State" files of many
// profile keys read in file order, timed against the whole-document ordered reader they replace.
//
//   tidewell-bench-limits [--keys N]
//
// Memory is the matcher's own tables and the growth of the process's peak resident size while it is built.
#include <fmt/format.h>
#include <sys/resource.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "cleaning/adult_words.hpp"
#include "layout/chrome_local_state.hpp"

namespace {

double secondsOf(const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

long peakResidentKiB() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// The largest list accepted: one word per line, 100,000 lines, 10,000,000 bytes in all.
std::string largestWordList(std::mt19937& random) {
    std::string text;
    text.reserve(tidewell::kMaxWordListBytes);
    const std::size_t perWord = tidewell::kMaxWordListBytes / tidewell::kMaxWords - 1;
    for (std::size_t i = 0; i < tidewell::kMaxWords; ++i) {
        for (std::size_t j = 0; j < perWord; ++j) {
            text.push_back(static_cast<char>('a' + random() % 26));
        }
        text.push_back('\n');
    }
    return text;
}

std::string localStateWithKeys(std::size_t keys) {
    std::string text = R"({"profile":{"info_cache":{)";
    for (std::size_t i = 0; i < keys; ++i) {
        text += fmt::format(R"({}"Profile {}":{{"name":"Person {}"}})", i == 0 ? "" : ",", i, i);
    }
    return text + "}}}";
}

std::size_t orderedProfileCount(const std::string& text) {
    const auto json = nlohmann::ordered_json::parse(text, nullptr, false);
    return json.is_discarded() ? 0 : json["profile"]["info_cache"].size();
}

} // namespace

int main(int argc, char** argv) {
    std::size_t keys = 40000;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::string(argv[i]) == "--keys") {
            keys = std::stoul(argv[i + 1]);
        } else {
            std::fprintf(stderr, "usage: tidewell-bench-limits [--keys N]\n");
            return 2;
        }
    }
    std::mt19937 random(20261121);
    const std::string list = largestWordList(random);
    const long before = peakResidentKiB();
    tidewell::AdultWords words;
    const double readSeconds = secondsOf([&] { words = tidewell::makeAdultWords(*tidewell::readWordsText(list)); });
    const long after = peakResidentKiB();
    std::vector<std::string> urls;
    for (std::size_t i = 0; i < 100000; ++i) {
        std::string url = "https://www.example.com/";
        for (int j = 0; j < 60; ++j) {
            url.push_back(static_cast<char>('a' + random() % 26));
        }
        urls.push_back(std::move(url));
    }
    std::size_t matched = 0;
    const double matchSeconds = secondsOf([&] {
        for (const std::string& url : urls) {
            matched += words->matcher().matchesAny(url) ? 1U : 0U;
        }
    });
    fmt::print("word list: {} words in {} bytes\n", words->size(), list.size());
    fmt::print("  read and matcher built     {:10.3f} s\n", readSeconds);
    fmt::print("  matcher tables             {:10.1f} MB   limit 100 MB: {}\n",
               static_cast<double>(words->matcher().memoryBytes()) / 1e6,
               words->matcher().memoryBytes() < 100'000'000 ? "kept" : "NOT kept");
    fmt::print("  peak resident growth       {:10.1f} MB (list, words and matcher)\n",
               static_cast<double>(after - before) / 1e3);
    fmt::print("  100,000 addresses matched  {:10.3f} s ({} matched)\n", matchSeconds, matched);

    const std::string state = localStateWithKeys(keys);
    std::size_t profiles = 0;
    const double inOrder = secondsOf([&] { profiles = tidewell::chromeProfilesFromLocalState(state).size(); });
    std::size_t baselineProfiles = 0;
    const double ordered = secondsOf([&] { baselineProfiles = orderedProfileCount(state); });
    fmt::print("Local State: {} profile keys in {:.1f} MB\n", keys, static_cast<double>(state.size()) / 1e6);
    fmt::print("  read in file order         {:10.3f} s ({} profiles)\n", inOrder, profiles);
    fmt::print("  ordered whole-document     {:10.3f} s ({} profiles)\n", ordered, baselineProfiles);
    fmt::print("  ratio (ordered / in order) {:10.1f}x\n", ordered / inOrder);
    return profiles == baselineProfiles ? 0 : 1;
}
