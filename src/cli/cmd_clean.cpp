#include <fmt/format.h>

#include <istream>
#include <ostream>
#include <thread>

#include "catalogue/record_json.hpp"
#include "catalogue/record_keys.hpp"
#include "cleaning/adult_words.hpp"
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
    void reportLeft(const LeftAsItWas& left) override { cli::reportLeft(m_context.io, left); }
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
        m_leftSomething = outcome.leftAnything();
    }

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
    command->add_flag("--json", *json, "Print the new catalogue as JSON");
    const TickOptions ticks = addTickOptions(*command);

    return [command, yes, wait, json, ticks](CommandContext& context) {
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
        return static_cast<int>(terminal.leftSomething() ? kExitLeft : kExitOk);
    };
}

} // namespace tidewell::cli
