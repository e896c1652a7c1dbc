#include "base/held_folder.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace tidewell {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool startsWith(const std::vector<std::string>& components, const std::vector<std::string>& prefix) {
    return components.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), components.begin());
}

std::optional<std::string> realPathOf(const std::string& path) {
    char* real = ::realpath(path.c_str(), nullptr);
    if (real == nullptr) {
        return std::nullopt;
    }
    std::string result(real);
    std::free(real); // NOLINT: realpath allocates with malloc
    return result;
}

// Why an open of one component below parentFd failed, told apart by a look that follows nothing.
Reach reachFailure(int parentFd, const std::string& name, int error) {
    if (error == ENOENT) {
        return Reach::Missing;
    }
    struct stat st {};
    if (::fstatat(parentFd, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISDIR(st.st_mode)) {
        return Reach::ThroughLink;
    }
    return error == ELOOP || error == ENOTDIR ? Reach::ThroughLink : Reach::Unreadable;
}

} // namespace

std::optional<std::vector<std::string>> normalisedComponents(std::string_view path) {
    // The kernel takes a name only up to its first NUL byte, so a path holding one names something else than
    // its text: it names nothing here.
    if (path.empty() || path.front() != '/' || path.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    std::vector<std::string> components;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t slash = std::min(path.find('/', start), path.size());
        const std::string_view component = path.substr(start, slash - start);
        if (component == "..") {
            if (!components.empty()) {
                components.pop_back();
            }
        } else if (!component.empty() && component != ".") {
            components.emplace_back(component);
        }
        start = slash + 1;
    }
    return components;
}

std::optional<std::uint64_t> mountIdOf(int fd) {
    struct statx sx {};
    if (::statx(fd, "", AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW, STATX_MNT_ID, &sx) != 0 ||
        (sx.stx_mask & STATX_MNT_ID) == 0) {
        return std::nullopt;
    }
    return sx.stx_mnt_id;
}

HeldFolder::HeldFolder(std::string_view folder, std::optional<FolderIdentity> expected, std::string_view alsoAs) {
    std::optional<std::vector<std::string>> components = normalisedComponents(folder);
    if (!components) {
        return;
    }
    m_components = std::move(*components);
    for (const std::string& component : m_components) {
        m_path += "/" + component;
    }
    if (m_path.empty()) {
        m_path = "/";
    }
    // The one look-up by path: the folder itself may be reached through links. Everything below it is reached
    // from this open folder.
    auto fd = std::make_shared<UniqueFd>(::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat st {};
    if (!fd->valid() || ::fstat(fd->get(), &st) != 0) {
        return;
    }
    if (expected && (static_cast<std::uint64_t>(st.st_dev) != expected->device ||
                     static_cast<std::uint64_t>(st.st_ino) != expected->inode)) {
        return;
    }
    m_device = st.st_dev;
    m_mountId = mountIdOf(fd->get());
    m_fd = std::move(fd);

    std::optional<std::vector<std::string>> alias = normalisedComponents(alsoAs);
    const std::optional<std::string> realHeld = realPathOf(m_path);
    const std::optional<std::string> realAlias = alias ? realPathOf(std::string(alsoAs)) : std::nullopt;
    if (realHeld && realAlias) {
        const std::optional<std::vector<std::string>> held = normalisedComponents(*realHeld);
        std::optional<std::vector<std::string>> aliasReal = normalisedComponents(*realAlias);
        if (held && aliasReal && startsWith(*aliasReal, *held)) {
            m_aliasComponents = std::move(*alias);
            m_aliasInside.assign(aliasReal->begin() + static_cast<std::ptrdiff_t>(held->size()), aliasReal->end());
            m_alias = std::string(alsoAs);
        }
    }
}

std::optional<std::vector<std::string>> HeldFolder::componentsInside(std::string_view target) const {
    if (!valid()) {
        return std::nullopt;
    }
    std::optional<std::vector<std::string>> components = normalisedComponents(target);
    if (!components) {
        return std::nullopt;
    }
    std::vector<std::string> inside;
    if (!m_alias.empty() && components->size() > m_aliasComponents.size() &&
        startsWith(*components, m_aliasComponents)) {
        inside = m_aliasInside;
        inside.insert(inside.end(), components->begin() + static_cast<std::ptrdiff_t>(m_aliasComponents.size()),
                      components->end());
    } else if (components->size() > m_components.size() && startsWith(*components, m_components)) {
        inside.assign(components->begin() + static_cast<std::ptrdiff_t>(m_components.size()), components->end());
    } else {
        return std::nullopt;
    }
    return inside;
}

bool HeldFolder::onHeldMount(int fd) const {
    struct stat st {};
    if (::fstat(fd, &st) != 0 || st.st_dev != m_device) {
        return false;
    }
    return !m_mountId || mountIdOf(fd) == m_mountId;
}

UniqueFd HeldFolder::openFolder(std::span<const std::string> components, Reach& failure, Mounts mounts) const {
    if (!valid()) {
        failure = Reach::Outside;
        return {};
    }
    UniqueFd folder(::fcntl(m_fd->get(), F_DUPFD_CLOEXEC, 0));
    if (!folder.valid()) {
        failure = Reach::Unreadable;
        return {};
    }
    for (const std::string& component : components) {
        UniqueFd next(::openat(folder.get(), component.c_str(), kFolderFlags));
        if (!next.valid()) {
            failure = reachFailure(folder.get(), component, errno);
            return {};
        }
        if (mounts == Mounts::HeldOnly && !onHeldMount(next.get())) {
            failure = Reach::OtherMount;
            return {};
        }
        folder = std::move(next);
    }
    return folder;
}

} // namespace tidewell
