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

std::string DiskRoot::homePath() const {
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
