#include "layout/disk_root.hpp"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

namespace tidewell {

std::expected<DiskRoot, std::string> DiskRoot::make(std::string_view rootDir, std::string_view loginName,
                                                    const DiskLayout& layout) {
    if (rootDir.empty()) {
        return std::unexpected("the disk root is empty");
    }
    if (!isSingleComponent(loginName)) {
        return std::unexpected("the login name '" + std::string(loginName) + "' is not a single folder name");
    }
    std::error_code ec;
    std::filesystem::path root = std::filesystem::absolute(std::filesystem::path(rootDir), ec);
    if (ec) {
        return std::unexpected("cannot resolve the disk root '" + std::string(rootDir) + "': " + ec.message());
    }
    root = root.lexically_normal();
    struct stat st {};
    if (::stat(root.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        return std::unexpected("the disk root '" + std::string(rootDir) + "' is not a folder");
    }
    // The root is taken as the real folder it names. Grants name real folders too, so the catalogue's locations
    // and the deletion boundary agree even when the root is reached through a link.
    root = std::filesystem::canonical(root, ec);
    if (ec) {
        return std::unexpected("cannot resolve the disk root '" + std::string(rootDir) + "': " + ec.message());
    }
    std::string prefix = root.string();
    while (!prefix.empty() && prefix.back() == '/') {
        prefix.pop_back();
    }
    return DiskRoot(std::move(prefix), std::string(loginName), layout);
}

namespace {

// The home the user database gives a login name, or nothing when it knows no such name.
std::optional<std::string> databaseHome(std::string_view loginName) {
    const long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384U);
    struct passwd pw {};
    struct passwd* result = nullptr;
    const std::string name(loginName);
    if (::getpwnam_r(name.c_str(), &pw, buffer.data(), buffer.size(), &result) != 0 || result == nullptr ||
        result->pw_dir == nullptr || result->pw_dir[0] != '/') {
        return std::nullopt;
    }
    std::string home = result->pw_dir;
    while (!home.empty() && home.back() == '/') {
        home.pop_back();
    }
    // An account whose home is "/" has no home of its own: the whole disk is never taken for one.
    return home.empty() ? std::nullopt : std::optional<std::string>(std::move(home));
}

} // namespace

std::expected<DiskRoot, std::string> DiskRoot::open(std::optional<std::string_view> rootDir,
                                                    std::string_view loginName, std::string_view layoutName) {
    const DiskLayout* layout = layoutNamed(layoutName);
    if (layout == nullptr && layoutName != "auto") {
        return std::unexpected("unknown layout '" + std::string(layoutName) + "': the layouts are auto, macos, linux");
    }
    auto disk = make(rootDir.value_or("/"), loginName, layout != nullptr ? *layout : macosLayout());
    if (!disk) {
        return disk;
    }
    if (layout == nullptr) {
        struct stat st {};
        const std::string macosHome = disk->resolve(joinPath(macosLayout().homes, disk->m_login));
        layout = ::stat(macosHome.c_str(), &st) == 0 && S_ISDIR(st.st_mode) ? &macosLayout() : &linuxLayout();
        disk->m_layout = layout;
    }
    if (!rootDir && layout == &linuxLayout()) {
        disk->m_home = databaseHome(disk->m_login).value_or(std::string());
    }
    return disk;
}

std::string DiskRoot::processLoginName() {
    long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384U);
    struct passwd pw {};
    struct passwd* result = nullptr;
    if (::getpwuid_r(::geteuid(), &pw, buffer.data(), buffer.size(), &result) == 0 && result != nullptr) {
        return result->pw_name;
    }
    return std::to_string(::geteuid());
}

std::string DiskRoot::resolve(std::string_view absolutePath) const {
    std::string out = m_root;
    if (absolutePath.empty() || absolutePath.front() != '/') {
        out.push_back('/');
    }
    out.append(absolutePath);
    return out.empty() ? std::string("/") : out;
}

std::optional<std::string> DiskRoot::recordedInHome(std::string_view recorded) const {
    const std::string asRecorded = joinPath(m_layout->homes, m_login);
    if (!recorded.starts_with(asRecorded) || recorded.size() <= asRecorded.size() + 1 ||
        recorded[asRecorded.size()] != '/') {
        return std::nullopt;
    }
    const std::optional<std::vector<std::string>> below = strictComponents(recorded.substr(asRecorded.size()));
    if (!below) {
        return std::nullopt;
    }
    if (m_root.empty()) {
        return std::string(recorded);
    }
    std::string path = homePath();
    for (const std::string& component : *below) {
        path = joinPath(path, component);
    }
    return path;
}

std::string DiskRoot::homePath() const {
    if (!m_home.empty()) {
        return m_home;
    }
    return resolve(joinPath(m_layout->homes, m_login));
}

std::expected<void, DiskRoot::HomeProblem> DiskRoot::checkHome() const {
    const std::string home = homePath();
    struct stat st {};
    if (::lstat(home.c_str(), &st) != 0) {
        return std::unexpected(HomeProblem{true, "no home folder for '" + m_login + "': nothing at " + home});
    }
    std::error_code ec;
    const std::filesystem::path real = std::filesystem::canonical(home, ec);
    if (ec || ::stat(real.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        return std::unexpected(HomeProblem{false, "the home folder " + home + " is not a folder"});
    }
    if (!m_root.empty() && !real.string().starts_with(m_root + "/")) {
        return std::unexpected(HomeProblem{false, "the home folder " + home + " leads to " + real.string() +
                                                      ", outside the disk root " + m_root});
    }
    return {};
}

bool DiskRoot::exists(std::string_view absolutePath) const {
    struct stat st {};
    return ::stat(resolve(absolutePath).c_str(), &st) == 0;
}

} // namespace tidewell
