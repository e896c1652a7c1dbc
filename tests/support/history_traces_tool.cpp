// tidewell-history-traces chrome|firefox|safari HISTORY WORD...
//
// Runs the adult-history purge, as a clean runs it, on one browser's history database with these words: the
// matching pages go with every row that refers to them and with their icons' mappings in the favicon database
// beside. The folder above the database's profile folder is the one it may change things in. Prints the rows
// purged and whatever was left as it was; exits 1 when anything was. For the check that runs the real browsers on
// a profile purged so.

#include <cstdio>
#include <string>
#include <vector>

#include "base/log.hpp"
#include "cleaning/history_purge.hpp"
#include "layout/disk_layout.hpp"

int main(int argc, char** argv) {
    using namespace tidewell;
    if (argc < 4) {
        std::fprintf(stderr, "usage: tidewell-history-traces chrome|firefox|safari HISTORY WORD...\n");
        return 2;
    }
    const Browser* browser = findBrowser(macosLayout(), argv[1]);
    if (browser == nullptr || browser->history == nullptr) {
        std::fprintf(stderr, "no browser '%s'\n", argv[1]);
        return 2;
    }
    const std::string history = argv[2];
    const std::string profile = history.substr(0, history.rfind('/'));
    const DeletionBoundary boundary(profile.substr(0, profile.rfind('/')));
    std::vector<std::string> words(argv + 3, argv + argc);
    setLogSink([](std::string_view line) { std::printf("log: %.*s\n", static_cast<int>(line.size()), line.data()); });
    const CleanOutcome outcome = purgeHistory(*browser->history, FileUrl{history},
                                              PurgeContext{makeAdultWords(std::move(words)), boundary,
                                                           CleanMode::RealTime});
    for (const PurgedDatabase& purged : outcome.purged) {
        std::printf("%s: %lld pages purged\n", purged.database.c_str(), static_cast<long long>(purged.rowsRemoved));
    }
    for (const LeftAsItWas& left : outcome.left) {
        std::fprintf(stderr, "%s\n", describe(left).c_str());
    }
    return outcome.purged.empty() || outcome.leftAnything() ? 1 : 0;
}
