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
    const TickOptions ticks = addTickOptions(*command);

    return [command, json, ticks](CommandContext& context) {
        if (!homeIsUsable(context)) {
            return static_cast<int>(kExitUsage);
        }
        std::ostream& out = context.io.out;
        const bool streaming = !*json;
        ScanSession session(context.disk, sectionBuilders(context.disk.layout()), [&](const RecordPtr& section) {
            if (streaming) {
                printSection(out, section);
                out.flush();
            }
        });
        session.scan();
        const Catalogue& catalogue = session.catalogue();
        if (streaming) {
            printTotal(out, session.driver().measuredBytes(), catalogue.snapshot());
        }

        const auto applied = applyTicks(*command, ticks, catalogue);
        if (!applied) {
            return reportUsageError(context.io, applied.error());
        }
        if (*json) {
            out << jsonText(toJson(catalogue.snapshot())) << '\n';
        } else if (*applied > 0) {
            out << "\nAfter the ticks:\n";
            for (const RecordPtr& section : catalogue.snapshot()) {
                printSection(out, section);
            }
        }
        return static_cast<int>(kExitOk);
    };
}

} // namespace tidewell::cli
