#include <fmt/format.h>

#include <istream>
#include <ostream>
#include <thread>

#include "catalogue/record_json.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/browser_check.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "cli/catalogue_text.hpp"
#include "cli/command.hpp"
#include "cli/scan_session.hpp"
#include "sources/builders.hpp"

namespace tidewell::cli {

namespace {

// Retry's pace while the command waits for the browsers to be closed.
constexpr std::chrono::seconds kRetryInterval{2};

// The confirmation, asked of a person at a terminal; anything but "y" or "yes" (in any case) is No, and so is
// the lack of a terminal, which is said.
bool askOnTerminal(CliIo& io) {
    if (!io.interactive) {
        io.err << "tidewell-cli: nothing was cleaned: there is no terminal to confirm on; --yes answers yes\n";
        return false;
    }
    io.err << "Are you sure you want to erase selected privacy data? [y/N] " << std::flush;
    std::string answer;
    if (!std::getline(io.in, answer)) {
        return false;
    }
    std::erase_if(answer, [](char c) { return c == ' ' || c == '\t' || c == '\r'; });
    for (char& c : answer) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    return answer == "y" || answer == "yes";
}

std::string entryNames(const RecordList& entries) {
    std::string names;
    for (const RecordPtr& entry : entries) {
        names += (names.empty() ? "" : ", ") + entry->text("NameBrowser");
    }
    return names;
}

} // namespace

CommandRunner addCleanCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("clean", "Scan, apply the ticks, then remove what is ticked and show the new catalogue");
    auto yes = std::make_shared<bool>(false);
    auto wait = std::make_shared<bool>(false);
    auto json = std::make_shared<bool>(false);
    command->add_flag("--yes", *yes, "Answer yes to the confirmation");
    command->add_flag("--wait", *wait, "While a browser whose data is to go runs, look again every 2 seconds");
    command->add_flag("--json", *json, "Print the new catalogue as JSON");
    const TickOptions ticks = addTickOptions(*command);

    return [command, yes, wait, json, ticks](CommandContext& context) {
        if (!homeIsUsable(context)) {
            return static_cast<int>(kExitUsage);
        }
        CliIo& io = context.io;
        bool showing = false;
        ScanSession session(context.disk, standardBuilders(), [&](const RecordPtr& section) {
            if (showing && !*json) {
                printSection(io.out, *section);
                io.out.flush();
            }
        });
        session.scan();
        if (const auto applied = applyTicks(*command, ticks, session.catalogue()); !applied) {
            return reportUsageError(io, applied.error());
        }

        // The Clean button's path: confirmation, then the browsers whose data is to go must not run.
        const RecordList sections = tickedSections(session.catalogue().snapshot());
        std::unique_ptr<RunningApplications> system;
        const RunningApplications& running = runningApplications(io, system);
        bool declined = false;
        const BrowserPanel panel{
            .confirm =
                [&] {
                    declined = !(*yes || askOnTerminal(io));
                    return !declined;
                },
            .displayPanel =
                [&](const RecordList& entries) {
                    io.err << "Close these browsers to continue: " << entryNames(entries) << '\n';
                },
            .reloadPanel = [](const RecordList&) {},
        };
        if (!forceQuitBrowsers(&sections, context.disk, running, panel)) {
            if (declined) {
                return static_cast<int>(kExitDeclined);
            }
            if (!*wait) {
                return static_cast<int>(kExitBrowsersRunning);
            }
            do {
                if (io.pause) {
                    io.pause(kRetryInterval);
                } else {
                    std::this_thread::sleep_for(kRetryInterval);
                }
            } while (!tryAgain(&sections, context.disk, running, panel));
        }

        // The home is resolved once for the clean and held: every location is reached below that open folder.
        CleaningEngine engine(CleanMode::Interactive, DeletionBoundary(context.disk.homePath()), loadAdultWords());
        engine.setLeftReporter([&io](const LeftAsItWas& left) { reportLeft(io, left); });
        engine.cleanSelected(session.catalogue().snapshot());
        const bool leftSomething = engine.joinAll().leftAnything();

        showing = true;
        session.scan();
        if (*json) {
            io.out << toJson(session.catalogue().snapshot()).dump(2) << '\n';
        } else {
            printTotal(io.out, session.driver().measuredBytes(), session.catalogue().size());
        }
        return static_cast<int>(leftSomething ? kExitLeft : kExitOk);
    };
}

} // namespace tidewell::cli
