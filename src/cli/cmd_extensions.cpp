#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <array>
#include <ostream>

#include "base/byte_count.hpp"
#include "catalogue/record_json.hpp"
#include "catalogue/record_keys.hpp"
#include "cli/command.hpp"
#include "inventory/inventories.hpp"
#include "layout/profiles.hpp"

namespace tidewell::cli {

namespace {

// The keys of `extensions --json`, in order: the first three have always been there.
constexpr std::array<std::string_view, 8> kJsonKeys{"chrome", "firefox", "safari",  "chromium",
                                                    "brave",  "edge",    "vivaldi", "opera"};

// One browser's extensions as listed: extension records (none when a Chrome-family browser has no profile
// registry), or the entries of Safari's extensions folder.
struct Listed {
    const Browser* browser;
    std::optional<RecordList> records;
    UrlList entries;
};

std::vector<Listed> listExtensions(const DiskRoot& disk, SizeCounter& sizes) {
    // The Chrome family first, then Firefox's, then Safari's, each in the layout's order.
    std::vector<Listed> listed;
    for (const BrowserFamily family : {BrowserFamily::Chrome, BrowserFamily::Firefox, BrowserFamily::Safari}) {
        for (const Browser* browser : disk.layout().browsers) {
            if (browser->family != family) {
                continue;
            }
            switch (family) {
            case BrowserFamily::Chrome:
                listed.push_back({browser, chromeExtensions(disk, *browser, sizes), {}});
                break;
            case BrowserFamily::Firefox: {
                RecordList records;
                for (FirefoxExtension& extension : firefoxExtensions(disk, *browser, sizes)) {
                    records.push_back(std::move(extension.record));
                }
                listed.push_back({browser, std::move(records), {}});
                break;
            }
            case BrowserFamily::Safari:
                listed.push_back({browser, std::nullopt, safariExtensions(disk, *browser)});
                break;
            case BrowserFamily::Mail:
                break;
            }
        }
    }
    return listed;
}

void printRecords(std::ostream& out, const RecordList& records) {
    if (records.empty()) {
        fmt::print(out, "    none\n");
    }
    for (const RecordPtr& record : records) {
        fmt::print(out, "    {}  v{}  ({})  {}\n", record->text(keys::kExtensionName),
                   record->text(keys::kExtensionVersion), record->text(keys::kExtensionProfile),
                   formatByteCount(record->number(keys::kExtensionSize).value_or(0)));
    }
}

void printEntries(std::ostream& out, const UrlList& entries) {
    if (entries.empty()) {
        fmt::print(out, "    none\n");
    }
    for (const FileUrl& entry : entries) {
        fmt::print(out, "    {}\n", entry.path);
    }
}

} // namespace

CommandRunner addExtensionsCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("extensions", "List the installed extensions of every browser of the layout");
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print every browser's inventory as one JSON object");

    return [json](CommandContext& context) {
        if (!homeIsUsable(context)) {
            return static_cast<int>(kExitUsage);
        }
        std::ostream& out = context.io.out;
        SizeCounter sizes(SizeCounter::defaultWorkers(), {}, HeldFolder(context.disk.homePath()));
        const std::vector<Listed> listed = listExtensions(context.disk, sizes);
        if (*json) {
            // Every key is there on every layout: null for a browser the layout does not have, one that is not
            // installed, and a Chrome-family browser without a profile registry.
            auto all = nlohmann::ordered_json::object();
            for (const std::string_view key : kJsonKeys) {
                const auto browser = std::ranges::find(listed, key, [](const Listed& l) { return l.browser->key; });
                if (browser == listed.end() || !isInstalled(context.disk, *browser->browser)) {
                    all[std::string(key)] = nullptr;
                } else if (browser->browser->family == BrowserFamily::Safari) {
                    all[std::string(key)] = toJson(browser->entries);
                } else {
                    all[std::string(key)] = browser->records ? toJson(*browser->records) : nlohmann::ordered_json();
                }
            }
            out << jsonText(all) << '\n';
            return static_cast<int>(kExitOk);
        }
        for (const Listed& browser : listed) {
            if (browser.browser->family == BrowserFamily::Safari) {
                fmt::print(out, "{}\n", browser.browser->name);
                printEntries(out, browser.entries);
            } else if (browser.records) {
                fmt::print(out, "{}\n", browser.browser->name);
                printRecords(out, *browser.records);
            } else {
                // The browser never ran for this user: it has no list of profiles to read extensions from.
                fmt::print(out, "{}: no profile registry\n", browser.browser->name);
            }
        }
        return static_cast<int>(kExitOk);
    };
}

} // namespace tidewell::cli
