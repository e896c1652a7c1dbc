#include "platform/folder_grant.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/file_url.hpp"
#include "platform/file_access.hpp"

namespace tidewell {

std::string grantToBytes(const FolderGrant& grant) {
    const nlohmann::json json = {{"path", grant.path}, {"device", grant.device}, {"inode", grant.inode}};
    return json.dump();
}

std::optional<FolderGrant> grantFromBytes(std::string_view bytes) {
    const nlohmann::json json = nlohmann::json::parse(bytes, nullptr, false);
    if (!json.is_object()) {
        return std::nullopt;
    }
    const auto path = json.find("path");
    const auto device = json.find("device");
    const auto inode = json.find("inode");
    if (path == json.end() || !path->is_string() || device == json.end() || !device->is_number_unsigned() ||
        inode == json.end() || !inode->is_number_unsigned()) {
        return std::nullopt;
    }
    FolderGrant grant{path->get<std::string>(), device->get<std::uint64_t>(), inode->get<std::uint64_t>()};
    // A record whose path is not absolute could only be resolved against whatever the current folder is; one
    // whose names climb, repeat a slash or hold a NUL byte is not the real folder a grant records.
    if (grant.path != "/" && !strictComponents(grant.path)) {
        return std::nullopt;
    }
    return grant;
}

bool isInsideFolder(std::string_view path, std::string_view folder) {
    if (folder == "/") {
        return !path.empty() && path.front() == '/';
    }
    if (!path.starts_with(folder)) {
        return false;
    }
    return path.size() == folder.size() || path[folder.size()] == '/';
}

bool StartedGrants::startAccessing(const FolderGrant& grant) {
    if (!resolveFolderGrant(grant)) {
        return false;
    }
    const std::lock_guard lock(m_mutex);
    if (std::find(m_started.begin(), m_started.end(), grant) == m_started.end()) {
        m_started.push_back(grant);
    }
    return true;
}

bool StartedGrants::isWritableFileAtPath(std::string_view path) const {
    const std::optional<std::string> real = realPath(path);
    if (!real) {
        return false;
    }
    bool inside = false;
    {
        const std::lock_guard lock(m_mutex);
        inside = std::any_of(m_started.begin(), m_started.end(),
                             [&](const FolderGrant& grant) { return isInsideFolder(*real, grant.path); });
    }
    return inside && fileSystemAllowsWriting(*real);
}

std::vector<std::string> StartedGrants::folders() const {
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> paths;
    paths.reserve(m_started.size());
    for (const FolderGrant& grant : m_started) {
        paths.push_back(grant.path);
    }
    return paths;
}

std::optional<std::string> StartedGrants::boundary() const {
    const std::optional<FolderGrant> grant = boundaryGrant();
    return grant ? std::optional(grant->path) : std::nullopt;
}

std::optional<FolderGrant> StartedGrants::boundaryGrant() const {
    const std::lock_guard lock(m_mutex);
    if (m_started.empty()) {
        return std::nullopt;
    }
    return m_started.front();
}

} // namespace tidewell
