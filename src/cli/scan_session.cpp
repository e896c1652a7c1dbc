#include "cli/scan_session.hpp"

#include <CLI/CLI.hpp>

#include "catalogue/ticks.hpp"

namespace tidewell::cli {

ScanSession::ScanSession(const DiskRoot& disk, std::vector<SectionBuilder> builders, SectionSink onSection)
    : m_onSection(std::move(onSection)), m_driver(disk, m_queue, *this, std::move(builders)) {}

void ScanSession::scan() {
    m_reported = 0;
    m_driver.setScanRunning(false);
    m_driver.setScanDone(false);
    m_driver.startScan();
    m_queue.run();
    m_driver.waitForScanThread();
}

void ScanSession::sectionsChanged() {
    const RecordList sections = m_driver.catalogue().snapshot();
    for (; m_reported < sections.size(); ++m_reported) {
        if (m_onSection) {
            m_onSection(sections[m_reported]);
        }
    }
}

void ScanSession::scanFinished() {
    sectionsChanged();
    m_queue.quit();
}

std::vector<TickRequest> orderedTicks(const CLI::App& command, const CLI::Option* tick, const CLI::Option* untick) {
    std::vector<TickRequest> requests;
    std::size_t ticks = 0;
    std::size_t unticks = 0;
    for (const CLI::Option* option : command.parse_order()) {
        if (option == tick) {
            requests.push_back({Tick::On, tick->results().at(ticks++)});
        } else if (option == untick) {
            requests.push_back({Tick::Off, untick->results().at(unticks++)});
        }
    }
    return requests;
}

TickOptions addTickOptions(CLI::App& command) {
    TickOptions options;
    options.tick = command.add_option("--tick", "Tick SECTION or SECTION/ITEM after the scan (repeatable)")
                       ->type_name("PATH")
                       ->expected(1)
                       ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    options.untick = command.add_option("--untick", "Untick SECTION or SECTION/ITEM after the scan (repeatable)")
                         ->type_name("PATH")
                         ->expected(1)
                         ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    return options;
}

std::expected<std::size_t, std::string> applyTicks(const CLI::App& command, const TickOptions& options,
                                                   const Catalogue& catalogue) {
    const std::vector<TickRequest> requests = orderedTicks(command, options.tick, options.untick);
    for (const TickRequest& request : requests) {
        if (auto applied = applyTick(catalogue, request); !applied) {
            return std::unexpected(applied.error());
        }
    }
    return requests.size();
}

std::expected<void, std::string> applyTick(const Catalogue& catalogue, const TickRequest& request) {
    const std::vector<Section> sections = sectionsOf(catalogue.snapshot());
    // A PATH names sections and items by the names a person reads.
    const auto sectionNamed = [&](std::string_view name) -> std::optional<std::size_t> {
        for (std::size_t row = 0; row < sections.size(); ++row) {
            if (!sections[row].isPromotion() && sections[row].name() == name) {
                return row;
            }
        }
        return std::nullopt;
    };

    // Section names hold no slash, so the first slash ends the section's name; item names may hold slashes.
    const auto slash = request.path.find('/');
    if (const auto row = sectionNamed(request.path); row || slash == std::string::npos) {
        if (!row) {
            return std::unexpected("no section named '" + request.path + "'");
        }
        tickSection(catalogue, *row, request.state);
        return {};
    }
    const std::string sectionName = request.path.substr(0, slash);
    const std::string itemName = request.path.substr(slash + 1);
    const auto row = sectionNamed(sectionName);
    if (!row) {
        return std::unexpected("no section named '" + sectionName + "'");
    }
    const Section& section = sections[*row];
    if (std::ranges::none_of(section.items(), [&](const Item& item) { return item.name() == itemName; })) {
        return std::unexpected("section '" + sectionName + "' has no item named '" + itemName + "'");
    }
    Tick state = request.state;
    tickItemNamed(section, itemName, state);
    settleSectionTick(section);
    return {};
}

} // namespace tidewell::cli
