#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <expected>

#include "base/folders.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "cli/command.hpp"
#include "flows/purge_run.hpp"

namespace tidewell::cli {

namespace {

// A word list given by hand: its words, or why it is refused. One past its limits is refused whole, before it is
// read further than its size.
std::expected<std::vector<std::string>, std::string> readWordList(const std::string& path) {
    const std::optional<std::string> contents =
        path.find('\0') == std::string::npos ? readWholeFile(path, kMaxWordListBytes) : std::nullopt;
    if (!contents) {
        const int error = errno;
        struct stat st {};
        if (::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
            if (std::optional<std::string> refused = wordListSizePastLimit(static_cast<std::uint64_t>(st.st_size))) {
                return std::unexpected(std::move(*refused));
            }
        }
        return std::unexpected(std::string("cannot read the word list: ") + std::strerror(error != 0 ? error : EIO));
    }
    std::optional<std::vector<std::string>> words = readWordsText(*contents);
    if (!words) {
        return std::unexpected(whyWordsRefused(*contents));
    }
    return std::move(*words);
}

} // namespace

CommandRunner addPurgeCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "purge", "Run the hourly purge once: remove adult-site visits from every installed browser's history");
    auto wordsFile = std::make_shared<std::string>();
    command
        ->add_option("--words", *wordsFile,
                     "Use these words instead of the shipped list: a property list array, "
                     "or text with one word per line")
        ->type_name("FILE");

    return [command, wordsFile](CommandContext& context) {
        if (!homeIsUsable(context)) {
            return static_cast<int>(kExitUsage);
        }
        AdultWords words;
        if (command->count("--words") > 0) {
            std::expected<std::vector<std::string>, std::string> read = readWordList(*wordsFile);
            if (!read) {
                // Nothing is purged with part of a list.
                return reportUsageError(context.io, "'" + *wordsFile + "': " + read.error());
            }
            words = makeAdultWords(std::move(*read));
        }
        std::unique_ptr<RunningApplications> system;
        const RunningApplications& running = runningApplications(context.io, system);
        CleaningEngine engine(CleanMode::RealTime, DeletionBoundary(context.disk.homePath()));
        engine.setLeftReporter([&context](const LeftAsItWas& left) { reportLeft(context.io, left); });
        runHourlyPurge(context.disk, running, engine, [&] { return words ? words : loadAdultWords(); });
        return static_cast<int>(engine.joinAll().leftAnything() ? kExitLeft : kExitOk);
    };
}

} // namespace tidewell::cli
