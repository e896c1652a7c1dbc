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
            std::optional<std::vector<std::string>> read = readWordsFile(*wordsFile);
            if (!read) {
                return reportUsageError(context.io, "cannot read a word list from '" + *wordsFile + "'");
            }
            words = makeAdultWords(std::move(*read));
        }
        std::unique_ptr<RunningApplications> system;
        const RunningApplications& running = runningApplications(context.io, system);
        CleaningEngine engine(CleanMode::RealTime, DeletionBoundary(context.disk.homePath()));
        addAdultContents(context.disk, running, engine, [&] { return words ? words : loadAdultWords(); });
        engine.joinAll();
        return static_cast<int>(kExitOk);
    };
}

} // namespace tidewell::cli
