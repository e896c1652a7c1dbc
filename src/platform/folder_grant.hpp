#pragma once

#include <cstdint>
#include <expected>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// The record of a folder the person allowed Tidewell to work in, pinned to the very folder they chose: its path
/// (absolute, without links) and the device and inode numbers it had then. A grant is worth something only while
/// a folder with those numbers is still at that path, so a folder moved away, or removed and made again, or
/// replaced by a link, no longer carries the grant.
struct FolderGrant {
    std::string path;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const FolderGrant&) const = default;
};

/// Makes the grant for a chosen folder. The path is made absolute and its links are resolved first, so the grant
/// names the real folder. Fails, with the reason as text, when nothing is there or it is not a folder.
std::expected<FolderGrant, std::string> createFolderGrant(std::string_view folder);

/// Whether the grant still holds: at its path there is a folder (a link does not count) with its device and
/// inode numbers. Fails, with the reason as text, otherwise.
std::expected<void, std::string> resolveFolderGrant(const FolderGrant& grant);

/// The grant as bytes for the settings (a small JSON text), and back. Bytes that are not a grant (damaged, empty,
/// a relative path or one with an empty, ".", ".." or NUL-holding component, numbers out of range) give nothing.
std::string grantToBytes(const FolderGrant& grant);
std::optional<FolderGrant> grantFromBytes(std::string_view bytes);

/// Whether path is folder itself or lies inside it, comparing whole path components ("/a/bc" is not inside
/// "/a/b"). Both are taken as written: callers give absolute, normalised paths.
bool isInsideFolder(std::string_view path, std::string_view folder);

/// The grants started in this process. Tidewell reaches a folder only through a started grant: nothing counts as
/// writable before one is started, and once started a grant is never stopped while the process lives. The first
/// started folder is the boundary that deletion never crosses. Safe to use from any thread.
class StartedGrants {
public:
    /// Starts access to a grant that still resolves; a grant that does not resolve is not started. Starting the
    /// same folder twice keeps one entry. Returns whether the grant is started afterwards.
    bool startAccessing(const FolderGrant& grant);

    /// The writability test Tidewell makes of its own files: true when path lies in a started folder (or is one)
    /// and the file system lets this process write there. A path with "." or ".." components is normalised first;
    /// links inside the path are resolved, so a link out of the folder leads outside it.
    [[nodiscard]] bool isWritableFileAtPath(std::string_view path) const;

    /// The folders started so far, in the order they were started.
    [[nodiscard]] std::vector<std::string> folders() const;

    /// The first started folder, the deletion boundary; nothing before a grant is started.
    [[nodiscard]] std::optional<std::string> boundary() const;
    /// The grant of that folder, which pins the very folder the deletion boundary holds.
    [[nodiscard]] std::optional<FolderGrant> boundaryGrant() const;

private:
    mutable std::mutex m_mutex;
    std::vector<FolderGrant> m_started;
};

} // namespace tidewell
