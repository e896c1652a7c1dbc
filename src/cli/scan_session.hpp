#pragma once

#include <expected>
#include <functional>
#include <string>
#include <vector>

#include "base/main_thread.hpp"
#include "catalogue/scan_driver.hpp"
#include "cli/cli.hpp"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tidewell::cli {

/// One scan run to its end by the command-line tool: this thread plays the main thread (an event queue), the scan
/// runs on its own thread, and each section is reported as soon as its builder has appended it.
class ScanSession final : private ScanObserver {
public:
    using SectionSink = std::function<void(const RecordPtr& section)>;

    ScanSession(const DiskRoot& disk, std::vector<SectionBuilder> builders, SectionSink onSection);

    /// Runs a fresh scan and returns when it is done (both flags cleared first, as the rescan after a clean does).
    void scan();

    [[nodiscard]] ScanDriver& driver() { return m_driver; }
    [[nodiscard]] const Catalogue& catalogue() const { return m_driver.catalogue(); }

private:
    void sectionsChanged() override;
    void scanFinished() override;

    EventQueue m_queue;
    SectionSink m_onSection;
    std::size_t m_reported = 0;
    ScanDriver m_driver;
};

/// A --tick or --untick PATH, in the order given.
struct TickRequest {
    Tick state;
    std::string path;
};

/// Collects --tick and --untick of a command in the order they were given.
[[nodiscard]] std::vector<TickRequest> orderedTicks(const CLI::App& command, const CLI::Option* tick,
                                                    const CLI::Option* untick);

/// The --tick PATH and --untick PATH options of a command (each repeatable).
struct TickOptions {
    CLI::Option* tick = nullptr;
    CLI::Option* untick = nullptr;
};

/// Adds --tick and --untick to a command.
TickOptions addTickOptions(CLI::App& command);

/// Applies the command's --tick and --untick in the order given (see applyTick); stops at the first PATH that
/// names nothing and returns its error. Returns how many were applied.
[[nodiscard]] std::expected<std::size_t, std::string> applyTicks(const CLI::App& command, const TickOptions& options,
                                                                 const Catalogue& catalogue);

/// Applies one PATH as the window's clicks would: "SECTION" sets the section's check box in the item table;
/// "SECTION/ITEM" opens the section's details, sets the first item named ITEM and presses Done. A PATH that names
/// no section or item is an error, and changes nothing.
[[nodiscard]] std::expected<void, std::string> applyTick(const Catalogue& catalogue, const TickRequest& request);

} // namespace tidewell::cli
