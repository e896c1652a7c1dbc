#include <ostream>

#include "catalogue/record_json.hpp"
#include "cli/command.hpp"
#include "inventory/inventories.hpp"

namespace tidewell::cli {

CommandRunner addInventoryCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "inventory", "List launch agents, launch daemons, application support folders or applications");
    auto kind = std::make_shared<std::string>();
    command->add_option("what", *kind, "launch-agents, launch-daemons, app-support or apps");
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print the listing as a JSON array of file URLs");

    return [kind, json](CommandContext& context) {
        std::ostream& out = context.io.out;
        const std::vector<InventoryListing>& listings = context.disk.layout().inventories;
        for (const InventoryListing& listing : listings) {
            if (*kind != listing.kind) {
                continue;
            }
            if (!homeIsUsable(context)) {
                return static_cast<int>(kExitUsage);
            }
            const UrlList urls = inventoryListing(context.disk, listing);
            if (*json) {
                out << toJson(urls).dump(2) << '\n';
            } else {
                for (const FileUrl& url : urls) {
                    out << url.path << '\n';
                }
            }
            return static_cast<int>(kExitOk);
        }
        std::string kinds;
        for (const InventoryListing& listing : listings) {
            kinds += (kinds.empty() ? "" : ", ") + std::string(listing.kind);
        }
        return reportUsageError(context.io, kind->empty()
                                                ? "inventory needs a kind: " + kinds
                                                : "unknown inventory '" + *kind + "'; the kinds are: " + kinds);
    };
}

} // namespace tidewell::cli
