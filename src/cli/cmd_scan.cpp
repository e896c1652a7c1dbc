#include <ostream>

#include "catalogue/record_json.hpp"
#include "cli/catalogue_text.hpp"
#include "cli/command.hpp"
#include "cli/scan_session.hpp"
#include "sources/builders.hpp"

namespace tidewell::cli {

CommandRunner addScanCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("scan", "Scan the disk and show the catalogue, section by section");
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print the whole catalogue as JSON once the scan is done");
    CLI::Option* tick = command->add_option("--tick", "Tick SECTION or SECTION/ITEM after the scan (repeatable)")
                            ->type_name("PATH")
                            ->expected(1)
                            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    CLI::Option* untick = command->add_option("--untick", "Untick SECTION or SECTION/ITEM after the scan (repeatable)")
                              ->type_name("PATH")
                              ->expected(1)
                              ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);

    return [command, json, tick, untick](CommandContext& context) {
        std::ostream& out = context.io.out;
        const bool streaming = !*json;
        ScanSession session(context.disk, standardBuilders(), [&](const RecordPtr& section) {
            if (streaming) {
                printSection(out, *section);
                out.flush();
            }
        });
        session.scan();
        const Catalogue& catalogue = session.catalogue();
        if (streaming) {
            printTotal(out, session.driver().measuredBytes(), catalogue.size());
        }

        const std::vector<TickRequest> requests = orderedTicks(*command, tick, untick);
        for (const TickRequest& request : requests) {
            if (auto applied = applyTick(catalogue, request); !applied) {
                return reportUsageError(context.io, applied.error());
            }
        }
        if (*json) {
            out << toJson(catalogue.snapshot()).dump(2) << '\n';
        } else if (!requests.empty()) {
            out << "\nAfter the ticks:\n";
            for (const RecordPtr& section : catalogue.snapshot()) {
                printSection(out, *section);
            }
        }
        return static_cast<int>(kExitOk);
    };
}

} // namespace tidewell::cli
