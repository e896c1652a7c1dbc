#include "cleaning/adult_history_section.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "cli/command.hpp"

namespace tidewell::cli {

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
        AdultWords words;
        if (command->count("--words") > 0) {
            std::expected<std::vector<std::string>, std::string> read = readWordsFile(*wordsFile);
            if (!read) {
                // A list past its limits is refused whole: nothing is purged with part of it.
                return reportUsageError(context.io, "'" + *wordsFile + "': " + read.error());
            }
            words = makeAdultWords(std::move(*read));
        }
        std::unique_ptr<RunningApplications> system;
        const RunningApplications& running = runningApplications(context.io, system);
        CleaningEngine engine(CleanMode::RealTime, DeletionBoundary(context.disk.homePath()));
        engine.setLeftReporter([&context](const LeftAsItWas& left) { reportLeft(context.io, left); });
        addAdultContents(context.disk, running, engine, [&] { return words ? words : loadAdultWords(); });
        return static_cast<int>(engine.joinAll().leftAnything() ? kExitLeft : kExitOk);
    };
}

} // namespace tidewell::cli
