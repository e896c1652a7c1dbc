#include "platform/purge_schedule.hpp"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <map>

#include "platform/file_access.hpp"

namespace tidewell {

namespace {

constexpr std::string_view kWantsFolder = "timers.target.wants";

// "%" starts a substitution in every unit setting; "%%" is a literal one.
std::string escapePercentSigns(std::string_view value) {
    std::string escaped;
    for (const char c : value) {
        escaped += c;
        if (c == '%') {
            escaped += '%';
        }
    }
    return escaped;
}

// systemd runs no program whose path holds a quote, a backslash or a control character, however it is written,
// and a unit's value loses its outer blanks: such a path cannot be a service's program.
bool unitCanName(std::string_view program) {
    const auto unsafe = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7f || c == '"' || c == '\'' || c == '\\';
    };
    return program.starts_with('/') && std::ranges::none_of(program, unsafe) && !program.ends_with(' ');
}

// A message followed by the first line systemctl wrote on its error stream, in brackets, when it wrote one.
std::string withReason(std::string message, const std::optional<ProgramRun>& run) {
    const std::string reason = run ? run->err.substr(0, run->err.find('\n')) : std::string();
    return reason.empty() ? message : fmt::format("{} ({})", message, reason);
}

// `systemctl show` writes "Key=value" lines, one block per unit, blocks parted by an empty line.
std::vector<std::map<std::string, std::string, std::less<>>> showBlocks(const std::string& output) {
    std::vector<std::map<std::string, std::string, std::less<>>> blocks(1);
    std::size_t start = 0;
    while (start < output.size()) {
        std::size_t end = output.find('\n', start);
        end = end == std::string::npos ? output.size() : end;
        const std::string_view line(output.data() + start, end - start);
        if (line.empty()) {
            blocks.emplace_back();
        } else if (const std::size_t equals = line.find('='); equals != std::string_view::npos) {
            blocks.back().emplace(std::string(line.substr(0, equals)), std::string(line.substr(equals + 1)));
        }
        start = end + 1;
    }
    return blocks;
}

std::string timestampOrEmpty(std::string value) {
    return value == "n/a" || value == "0" ? std::string() : value;
}

} // namespace

// The program is the first word of ExecStart, quoted for the blanks a path may hold. Variables are not expanded in
// that word, so only "%" needs escaping.
std::string purgeServiceUnit(std::string_view program) {
    return fmt::format("[Unit]\n"
                       "Description=Tidewell's purge of adult-site history\n"
                       "Documentation=man:tidewell-cli(1)\n"
                       "ConditionFileIsExecutable={}\n"
                       "\n"
                       "[Service]\n"
                       "Type=oneshot\n"
                       "ExecStart={} purge\n"
                       "Nice=10\n"
                       "IOSchedulingClass=idle\n",
                       escapePercentSigns(program), '"' + escapePercentSigns(program) + '"');
}

std::string purgeTimerUnit() {
    return "[Unit]\n"
           "Description=Tidewell's hourly purge of adult-site history\n"
           "Documentation=man:tidewell-cli(1)\n"
           "\n"
           "[Timer]\n"
           "OnCalendar=hourly\n"
           "Persistent=true\n"
           "\n"
           "[Install]\n"
           "WantedBy=timers.target\n";
}

bool purgeTimerEnabledIn(const std::string& unitFolder) {
    const std::string unit = unitFolder + "/" + std::string(kPurgeTimerUnit);
    const std::string link = fmt::format("{}/{}/{}", unitFolder, kWantsFolder, kPurgeTimerUnit);
    struct stat info {};
    return ::stat(unit.c_str(), &info) == 0 && S_ISREG(info.st_mode) && ::lstat(link.c_str(), &info) == 0;
}

PurgeSchedule::PurgeSchedule(std::string unitFolder, std::string program, const UserServiceManager& manager)
    : m_unitFolder(std::move(unitFolder)), m_program(std::move(program)), m_manager(manager) {}

std::optional<ScheduleFailure> PurgeSchedule::requireManager() const {
    const std::optional<ProgramRun> version = m_manager.systemctl({"show", "--property=Version"});
    if (!version) {
        return ScheduleFailure{ScheduleFailure::Kind::NoUserManager,
                               "systemctl --user is not available: systemctl cannot be run"};
    }
    if (version->status != 0) {
        return ScheduleFailure{
            ScheduleFailure::Kind::NoUserManager,
            withReason("systemctl --user is not available: no systemd user manager runs for this session", version)};
    }
    return std::nullopt;
}

bool PurgeSchedule::systemctlSucceeds(const std::vector<std::string>& args) const {
    const std::optional<ProgramRun> run = m_manager.systemctl(args);
    return run && run->status == 0;
}

bool PurgeSchedule::removeUnits() const {
    bool removed = true;
    for (const std::string& path :
         {fmt::format("{}/{}/{}", m_unitFolder, kWantsFolder, kPurgeTimerUnit),
          fmt::format("{}/{}", m_unitFolder, kPurgeTimerUnit), fmt::format("{}/{}", m_unitFolder, kPurgeServiceUnit)}) {
        removed = (::unlink(path.c_str()) == 0 || errno == ENOENT) && removed;
    }
    return removed;
}

std::expected<void, ScheduleFailure> PurgeSchedule::turnOn() const {
    if (std::optional<ScheduleFailure> missing = requireManager()) {
        return std::unexpected(std::move(*missing));
    }
    if (!unitCanName(m_program)) {
        return std::unexpected(ScheduleFailure{
            ScheduleFailure::Kind::Failed, fmt::format("a systemd unit cannot run the program at '{}'", m_program)});
    }
    if (!replaceFileWhole(m_unitFolder, kPurgeServiceUnit, purgeServiceUnit(m_program)) ||
        !replaceFileWhole(m_unitFolder, kPurgeTimerUnit, purgeTimerUnit())) {
        removeUnits();
        return std::unexpected(ScheduleFailure{ScheduleFailure::Kind::Failed,
                                               fmt::format("cannot write the units into {}", m_unitFolder)});
    }
    const std::vector<std::string> enable{"enable", "--now", std::string(kPurgeTimerUnit)};
    std::optional<ProgramRun> enabled;
    if (systemctlSucceeds({"daemon-reload"})) {
        enabled = m_manager.systemctl(enable);
    }
    if (!enabled || enabled->status != 0) {
        // A timer that could not be started is not left half set up for the next login to find.
        removeUnits();
        static_cast<void>(systemctlSucceeds({"daemon-reload"}));
        return std::unexpected(ScheduleFailure{
            ScheduleFailure::Kind::Failed,
            withReason(fmt::format("systemctl --user could not enable {}", kPurgeTimerUnit), enabled)});
    }
    return {};
}

std::expected<void, ScheduleFailure> PurgeSchedule::turnOff() const {
    if (std::optional<ScheduleFailure> missing = requireManager()) {
        return std::unexpected(std::move(*missing));
    }
    // Stopping a timer the manager does not know fails harmlessly. The link `enable` made goes with the units:
    // removing it is what disabling does.
    static_cast<void>(systemctlSucceeds({"stop", std::string(kPurgeTimerUnit)}));
    if (!removeUnits()) {
        return std::unexpected(ScheduleFailure{ScheduleFailure::Kind::Failed,
                                               fmt::format("cannot remove the units from {}", m_unitFolder)});
    }
    if (!systemctlSucceeds({"daemon-reload"})) {
        return std::unexpected(ScheduleFailure{ScheduleFailure::Kind::Failed,
                                               "the units are removed, but systemctl --user daemon-reload failed"});
    }
    return {};
}

std::expected<PurgeScheduleStatus, ScheduleFailure> PurgeSchedule::status() const {
    if (std::optional<ScheduleFailure> missing = requireManager()) {
        return std::unexpected(std::move(*missing));
    }
    const std::optional<ProgramRun> shown = m_manager.systemctl(
        {"show", std::string(kPurgeTimerUnit), std::string(kPurgeServiceUnit),
         "--property=UnitFileState,ActiveState,NextElapseUSecRealtime,Result,ExecMainStatus,ExecMainExitTimestamp"});
    if (!shown || shown->status != 0) {
        return std::unexpected(ScheduleFailure{
            ScheduleFailure::Kind::Failed, withReason(fmt::format("systemctl --user show {} failed", kPurgeTimerUnit), shown)});
    }
    auto blocks = showBlocks(shown->out);
    blocks.resize(2);
    auto& timer = blocks[0];
    auto& service = blocks[1];
    PurgeScheduleStatus status;
    status.on = timer["UnitFileState"] == "enabled" && timer["ActiveState"] == "active";
    status.nextRun = status.on ? timestampOrEmpty(timer["NextElapseUSecRealtime"]) : std::string();
    status.lastRun = timestampOrEmpty(service["ExecMainExitTimestamp"]);
    if (!status.lastRun.empty()) {
        status.lastResult = service["Result"];
        // After a signal the main status is the signal's number, not an exit status.
        const std::string& text = service["ExecMainStatus"];
        int exitStatus = 0;
        if ((status.lastResult == "success" || status.lastResult == "exit-code") &&
            std::from_chars(text.data(), text.data() + text.size(), exitStatus).ec == std::errc()) {
            status.lastExitStatus = exitStatus;
        }
    }
    return status;
}

} // namespace tidewell
