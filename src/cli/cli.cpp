#include "cli/cli.hpp"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <ostream>

#include "cli/command.hpp"
#include "cli/help_text.hpp"
#include "base/log.hpp"
#include "version.hpp"

namespace tidewell::cli {

namespace {

constexpr const char* kProgram = "tidewell-cli";

// Log lines of one run go to the run's error stream, and back to standard error afterwards.
class LogRedirect {
public:
    explicit LogRedirect(std::ostream& err)
        : m_previous(setLogSink([&err](std::string_view line) { err << line << '\n'
                                                                    << std::flush; })) {}
    ~LogRedirect() { setLogSink(std::move(m_previous)); }
    LogRedirect(const LogRedirect&) = delete;
    LogRedirect& operator=(const LogRedirect&) = delete;

private:
    LogSink m_previous;
};

// The command a run names: the first argument that is not a global option or its value. Nothing when there is
// none, or when the run only asks for help or the version.
std::optional<std::string> namedCommand(const std::vector<std::string>& args) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--root" || arg == "--user" || arg == "--layout") {
            ++i;
        } else if (arg.starts_with("-")) {
            if (arg == "--help" || arg == "-h" || arg == "--help-all" || arg == "--version") {
                return std::nullopt;
            }
        } else {
            return arg;
        }
    }
    return std::string();
}

// CLI11 words its messages for a terminal; one line is enough here.
std::string oneLine(std::string message) {
    for (char& c : message) {
        if (c == '\n') {
            c = ' ';
        }
    }
    while (!message.empty() && message.back() == ' ') {
        message.pop_back();
    }
    return message;
}

} // namespace

bool homeIsUsable(CommandContext& context) {
    if (const auto home = context.disk.checkHome(); !home) {
        reportUsageError(context.io, home.error().message);
        return false;
    }
    return true;
}

int reportUsageError(CliIo& io, std::string_view message) {
    io.err << kProgram << ": " << message << '\n';
    return kExitUsage;
}

void reportLeft(CliIo& io, const LeftAsItWas& left) {
    io.err << kProgram << ": " << describe(left) << '\n' << std::flush;
}

const RunningApplications& runningApplications(CliIo& io, std::unique_ptr<RunningApplications>& owned) {
    if (io.running != nullptr) {
        return *io.running;
    }
    if (!owned) {
        owned = systemRunningApplications();
    }
    return *owned;
}

int runCli(const std::vector<std::string>& args, CliIo& io) {
    const LogRedirect logs(io.err);

    CLI::App app("Tidewell finds and removes the privacy traces of browsers, mail, the system and the Flash player.",
                 kProgram);
    app.set_version_flag("--version", fmt::format("{} {}", kProgram, kVersion));
    installHelpText(app);
    app.require_subcommand(1, 1);
    std::string rootDir = "/";
    std::string user = DiskRoot::processLoginName();
    std::string layout = "auto";
    CLI::Option* rootOption =
        app.add_option("--root", rootDir, "The disk to look at: any folder laid out like a macOS or a Linux disk")
            ->type_name("DIR")
            ->capture_default_str();
    app.add_option("--user", user,
                   "Whose home folder to look at: <root>/Users/NAME on macOS, <root>/home/NAME on Linux, or without "
                   "--root NAME's home from the user database (default: your login name)")
        ->type_name("NAME");
    app.add_option("--layout", layout,
                   "How the disk is laid out: macos, linux, or auto (macOS when <root>/Users/NAME is a folder)")
        ->type_name("LAYOUT")
        ->check(CLI::IsMember({"auto", "macos", "linux"}))
        ->capture_default_str();

    std::map<const CLI::App*, CommandRunner> runners;
    const auto add = [&](CommandRunner (*adder)(CLI::App&)) {
        CommandRunner runner = adder(app);
        runners.emplace(app.get_subcommands({}).back(), std::move(runner));
    };
    add(addScanCommand);
    add(addExtensionsCommand);
    add(addInventoryCommand);
    add(addCleanCommand);
    add(addPurgeCommand);
    add(addScheduleCommand);

    // An unknown or missing command is named, with the commands there are, before CLI11 words it otherwise.
    std::string commands;
    bool known = false;
    const std::optional<std::string> named = namedCommand(args);
    for (const CLI::App* command : app.get_subcommands({})) {
        commands += (commands.empty() ? "" : ", ") + command->get_name();
        known = known || (named && command->get_name() == *named);
    }
    if (named && !known) {
        return reportUsageError(io, named->empty() ? "no command given; the commands are: " + commands
                                                   : "unknown command '" + *named + "'; the commands are: " + commands);
    }

    std::vector<std::string> reversed(args.rbegin(), args.rend());
    try {
        app.parse(reversed);
    } catch (const CLI::CallForHelp&) {
        io.out << app.help();
        return kExitOk;
    } catch (const CLI::CallForAllHelp&) {
        io.out << app.help("", CLI::AppFormatMode::All);
        return kExitOk;
    } catch (const CLI::CallForVersion& version) {
        io.out << version.what() << '\n';
        return kExitOk;
    } catch (const CLI::ParseError& error) {
        return reportUsageError(io, oneLine(error.what()));
    }

    const auto disk =
        DiskRoot::open(rootOption->count() > 0 ? std::optional<std::string_view>(rootDir) : std::nullopt, user, layout);
    if (!disk) {
        return reportUsageError(io, disk.error());
    }
    CommandContext context{*disk, io};
    for (const CLI::App* used : app.get_subcommands()) {
        return runners.at(used)(context);
    }
    return reportUsageError(io, "no command given");
}

} // namespace tidewell::cli
