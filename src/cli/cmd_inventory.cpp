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
    std::vector<std::string> names;
    for (const Listing& listing : kListings) {
        names.emplace_back(listing.name);
    }
    command->add_option("what", *kind, "launch-agents, launch-daemons, app-support or apps")
        ->required()
        ->check(CLI::IsMember(names));
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print the listing as a JSON array of file URLs");

    return [kind, json](CommandContext& context) {
        std::ostream& out = context.io.out;
        for (const Listing& listing : kListings) {
            if (*kind != listing.name) {
                continue;
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
        return reportUsageError(context.io, "unknown inventory '" + *kind + "'");
    };
}

} // namespace tidewell::cli
