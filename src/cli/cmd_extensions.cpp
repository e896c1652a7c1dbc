#include <fmt/format.h>
#include <fmt/ostream.h>

#include <ostream>

#include "base/byte_count.hpp"
#include "catalogue/record_json.hpp"
#include "cli/command.hpp"
#include "inventory/privacy_scan.hpp"

namespace tidewell::cli {

namespace {

void printRecords(std::ostream& out, const RecordList& records) {
    if (records.empty()) {
        fmt::print(out, "    none\n");
    }
    for (const RecordPtr& record : records) {
        fmt::print(out, "    {}  v{}  ({})  {}\n", record->text("nameExt"), record->text("verExt"),
                   record->text("PersonExt"), formatByteCount(record->number("sizeExt").value_or(0)));
    }
}

} // namespace

CommandRunner addExtensionsCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("extensions", "List the installed extensions of Chrome, Firefox and Safari");
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print the three inventories as one JSON object");

    return [json](CommandContext& context) {
        if (!homeIsUsable(context)) {
            return static_cast<int>(kExitUsage);
        }
        std::ostream& out = context.io.out;
        SizeCounter sizes(SizeCounter::defaultWorkers(), {}, HeldFolder(context.disk.homePath()));
        const std::optional<RecordList> chrome = PrivacyScan::getChromeExtantionList(context.disk, sizes);
        const RecordList firefox = PrivacyScan::getFirefoxExtantionList(context.disk, sizes);
        const UrlList safari = PrivacyScan::getSafariExtantionList(context.disk);
        if (*json) {
            const nlohmann::ordered_json all = {{"chrome", chrome ? toJson(*chrome) : nlohmann::ordered_json()},
                                                {"firefox", toJson(firefox)},
                                                {"safari", toJson(safari)}};
            out << all.dump(2) << '\n';
            return static_cast<int>(kExitOk);
        }
        if (chrome) {
            fmt::print(out, "Chrome\n");
            printRecords(out, *chrome);
        } else {
            // Chrome never ran for this user: it has no list of profiles to read extensions from.
            fmt::print(out, "Chrome: no profile registry\n");
        }
        fmt::print(out, "Firefox\n");
        printRecords(out, firefox);
        fmt::print(out, "Safari\n");
        if (safari.empty()) {
            fmt::print(out, "    none\n");
        }
        for (const FileUrl& entry : safari) {
            fmt::print(out, "    {}\n", entry.path);
        }
        return static_cast<int>(kExitOk);
    };
}

} // namespace tidewell::cli
