#include <fmt/format.h>

#include <fstream>
#include <istream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <thread>

#include "catalogue/record_json.hpp"
#include "catalogue/record_keys.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "cli/catalogue_text.hpp"
#include "cli/command.hpp"
#include "cli/scan_session.hpp"
#include "flows/clean_flow.hpp"
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

using Json = nlohmann::ordered_json;

// A location in the report: its path as text (a byte that is not UTF-8 shows as U+FFFD when written) and its file
// URL, percent-encoded, which stays exact.
void putLocation(Json& entry, const std::string& path) {
    entry["location"] = path;
    entry["url"] = FileUrl{path}.text();
}

Json leftJson(const std::vector<LeftAsItWas>& left) {
    Json list = Json::array();
    for (const LeftAsItWas& place : left) {
        Json entry;
        putLocation(entry, place.location);
        entry["reason"] = std::string(reasonName(place.reason));
        entry["detail"] = place.detail;
        list.push_back(std::move(entry));
    }
    return list;
}

Json outcomeJson(const CleanOutcome& outcome) {
    Json report;
    report["bytesFreed"] = outcome.bytesFreed();
    report["removed"] = Json::array();
    for (const RemovedLocation& removed : outcome.removed) {
        Json entry;
        putLocation(entry, removed.location);
        entry["bytes"] = removed.bytes;
        entry["whole"] = removed.whole;
        report["removed"].push_back(std::move(entry));
    }
    report["purged"] = Json::array();
    for (const PurgedDatabase& purged : outcome.purged) {
        Json entry;
        putLocation(entry, purged.database);
        entry["rowsRemoved"] = purged.rowsRemoved;
        report["purged"].push_back(std::move(entry));
    }
    report["left"] = leftJson(outcome.left);
    return report;
}

Json previewJson(const CleanPreview& preview) {
    Json report;
    report["dryRun"] = true;
    std::uint64_t bytes = 0;
    Json locations = Json::array();
    for (const PreviewedLocation& location : preview.locations) {
        Json entry;
        putLocation(entry, location.location);
        entry["bytes"] = location.bytes;
        entry["whole"] = location.whole;
        entry["item"] = location.item;
        locations.push_back(std::move(entry));
        bytes += location.bytes;
    }
    report["bytesToFree"] = bytes;
    report["wouldRemove"] = std::move(locations);
    report["wouldPurge"] = Json::array();
    for (const PreviewedDatabase& database : preview.databases) {
        Json entry;
        putLocation(entry, database.database);
        entry["matchingRows"] = database.matchingRows;
        entry["item"] = database.item;
        report["wouldPurge"].push_back(std::move(entry));
    }
    report["wouldLeave"] = leftJson(preview.left);
    return report;
}

std::string dumped(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

// Writes the report to the file --report names; says so on the error stream when it cannot.
bool writeReport(CliIo& io, const std::string& file, const Json& report) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << dumped(report);
    out.close();
    if (!out) {
        io.err << "tidewell-cli: '" << file << "': the report could not be written\n";
        return false;
    }
    return true;
}

// The clean as the command line does it: the question on the terminal, the running browsers named on the error
// stream, the new catalogue printed after the rescan.
class TerminalClean final : public CleanFace {
public:
    TerminalClean(CommandContext& context, ScanSession& session, bool yes, bool json)
        : m_context(context), m_session(session), m_yes(yes), m_json(json) {}

    bool confirm() override { return m_yes || askOnTerminal(m_context.io); }
    void showBrowsersInTheWay(const RecordList& entries) override {
        std::string names;
        for (const RecordPtr& entry : entries) {
            names += (names.empty() ? "" : ", ") + entry->text(keys::kBrowserName);
        }
        m_context.io.err << "Close these browsers to continue: " << names << '\n';
    }
    // The home is resolved once for the clean and held: every location is reached below that open folder.
    DeletionBoundary deletionBoundary() override { return DeletionBoundary(m_context.disk.homePath()); }
    // What could not go is said at once; all that was left, and why, is in the report at the end.
    void reportLeft(const LeftAsItWas& left) override {
        if (left.reason != LeftReason::UntickedInside) {
            cli::reportLeft(m_context.io, left);
        }
    }
    void rescan() override {
        m_showing = true;
        m_session.scan();
    }
    void reportCleaned(const CleanOutcome& outcome) override {
        CliIo& io = m_context.io;
        if (m_json) {
            io.out << jsonText(toJson(m_session.catalogue().snapshot())) << '\n';
        } else {
            printTotal(io.out, m_session.driver().measuredBytes(), m_session.catalogue().snapshot());
        }
        io.out.flush();
        for (const std::string& line : reportLines(outcome)) {
            io.err << line << '\n';
        }
        io.err.flush();
        m_leftSomething = outcome.leftAgainstTheTicks();
        m_outcome = outcome;
    }
    [[nodiscard]] const CleanOutcome& outcome() const { return m_outcome; }

    // The rescan's sections are printed as they come, unless the catalogue is printed as JSON at the end.
    [[nodiscard]] bool showsSections() const { return m_showing && !m_json; }
    [[nodiscard]] bool leftSomething() const { return m_leftSomething; }

private:
    CommandContext& m_context;
    ScanSession& m_session;
    bool m_yes;
    bool m_json;
    bool m_showing = false;
    bool m_leftSomething = false;
    CleanOutcome m_outcome;
};

} // namespace

CommandRunner addCleanCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("clean", "Scan, apply the ticks, then remove what is ticked and show the new catalogue");
    auto yes = std::make_shared<bool>(false);
    auto wait = std::make_shared<bool>(false);
    auto json = std::make_shared<bool>(false);
    command->add_flag("--yes", *yes, "Answer yes to the confirmation");
    command->add_flag("--wait", *wait, "While a browser whose data is to go runs, look again every 2 seconds");
    auto dryRun = std::make_shared<bool>(false);
    auto report = std::make_shared<std::string>();
    command->add_flag("--json", *json, "Print the new catalogue as JSON (with --dry-run: what would be done)");
    command->add_flag("--dry-run", *dryRun,
                      "Change nothing: print every location that would go with its size and item, and every history "
                      "database that would be purged with its matching rows");
    command->add_option("--report", *report, "Also write what the clean did (or would do) to FILE as JSON")
        ->type_name("FILE");
    const TickOptions ticks = addTickOptions(*command);

    return [command, yes, wait, json, dryRun, report, ticks](CommandContext& context) {
        if (!homeIsUsable(context)) {
            return static_cast<int>(kExitUsage);
        }
        CliIo& io = context.io;
        const TerminalClean* face = nullptr;
        ScanSession session(context.disk, sectionBuilders(context.disk.layout()), [&](const RecordPtr& section) {
            if (face != nullptr && face->showsSections()) {
                printSection(io.out, section);
                io.out.flush();
            }
        });
        session.scan();
        if (const auto applied = applyTicks(*command, ticks, session.catalogue()); !applied) {
            return reportUsageError(io, applied.error());
        }

        if (*dryRun) {
            // Nothing is asked and no browser is waited for: nothing will change.
            const CleanPreview preview = previewClean(planClean(session.catalogue().snapshot()),
                                                      DeletionBoundary(context.disk.homePath()), loadAdultWords());
            if (*json) {
                io.out << dumped(previewJson(preview));
            } else {
                for (const std::string& line : previewLines(preview)) {
                    io.out << line << '\n';
                }
            }
            io.out.flush();
            if (!report->empty() && !writeReport(io, *report, previewJson(preview))) {
                return static_cast<int>(kExitFailure);
            }
            return static_cast<int>(kExitOk);
        }

        TerminalClean terminal(context, session, *yes, *json);
        face = &terminal;
        std::unique_ptr<RunningApplications> system;
        CleanFlow flow(context.disk, runningApplications(io, system), terminal, loadAdultWords());
        flow.start(session.catalogue().snapshot());
        if (flow.state() == CleanFlow::State::WaitingForBrowsers && !*wait) {
            return static_cast<int>(kExitBrowsersRunning);
        }
        while (flow.state() == CleanFlow::State::WaitingForBrowsers) {
            if (io.pause) {
                io.pause(kRetryInterval);
            } else {
                std::this_thread::sleep_for(kRetryInterval);
            }
            flow.retry();
        }
        if (flow.state() == CleanFlow::State::Declined) {
            return static_cast<int>(kExitDeclined);
        }
        if (!report->empty() && !writeReport(io, *report, outcomeJson(terminal.outcome()))) {
            return static_cast<int>(kExitFailure);
        }
        return static_cast<int>(terminal.leftSomething() ? kExitLeft : kExitOk);
    };
}

} // namespace tidewell::cli
