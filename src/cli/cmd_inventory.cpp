#include <ostream>

#include "catalogue/record_json.hpp"
#include "cli/command.hpp"
#include "inventory/privacy_scan.hpp"

namespace tidewell::cli {

namespace {

struct Listing {
    const char* name;
    UrlList (*list)(const DiskRoot&);
};

constexpr Listing kListings[] = {
    {"launch-agents", PrivacyScan::getLaunchAgentsList},
    {"launch-daemons", PrivacyScan::getLaunchDaemonsList},
    {"app-support", PrivacyScan::getApplicationSupportList},
    {"apps", PrivacyScan::getAppList},
};

} // namespace

CommandRunner addInventoryCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "inventory", "List launch agents, launch daemons, application support folders or applications");
    auto kind = std::make_shared<std::string>();
    command->add_option("what", *kind, "launch-agents, launch-daemons, app-support or apps");
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print the listing as a JSON array of file URLs");

    return [kind, json](CommandContext& context) {
        std::ostream& out = context.io.out;
        for (const Listing& listing : kListings) {
            if (*kind != listing.name) {
                continue;
            }
            if (!homeIsUsable(context)) {
                return static_cast<int>(kExitUsage);
            }
            const UrlList urls = listing.list(context.disk);
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
        for (const Listing& listing : kListings) {
            kinds += (kinds.empty() ? "" : ", ") + std::string(listing.name);
        }
        return reportUsageError(context.io, kind->empty()
                                                ? "inventory needs a kind: " + kinds
                                                : "unknown inventory '" + *kind + "'; the kinds are: " + kinds);
    };
}

} // namespace tidewell::cli
