#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/folders.hpp"

namespace tidewell {

/// A folder's identity on its file system: what a grant pins.
struct FolderIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};

/// Why a location below a held folder could not be reached.
enum class Reach {
    Outside,     // not below the held folder (or holding a NUL byte, which the kernel would cut it at)
    Missing,     // nothing there
    ThroughLink, // a link, or something that is not a folder, stands on the way
    OtherMount,  // a folder on the way lies on another file system or mount
    Unreadable,  // a folder on the way cannot be opened
};

/// A folder resolved once and held open, below which every location of a scan or a clean is reached: the home
/// folder, or the folder an access grant names. Locations stay paths (file URLs) in the catalogue; at use each is
/// turned into the components below the held folder, and those very components are opened one by one relative to
/// the open folder, never following a link, never leaving the held folder's mount. A link or a folder swapped in
/// on the way afterwards, a name that climbs out, or a path too long for the system to take whole changes nothing
/// of that.
///
/// Copies share the one open folder; it is closed when the last copy goes.
class HeldFolder {
public:
    /// Holds nothing: admits nothing.
    HeldFolder() = default;

    /// Resolves `folder` (absolute; links on the way to it followed, since the folder itself may be reached
    /// through one, as a home under a linked /home is) and holds it open. With `expected`, only the very folder
    /// with that identity is held: a grant's folder moved away or made anew holds nothing. Locations are matched
    /// against `folder` as written, normalised lexically ("/Users/ann/" and "/Users//ann/." are "/Users/ann").
    ///
    /// `alsoAs`: another spelling of a folder at or below this one, as the catalogue writes its locations (the
    /// home, when the grant is its real place or an ancestor of it). It is resolved once here; locations under it
    /// are reached through its real place below the held folder. Ignored when it does not resolve to a folder at
    /// or below the held one.
    explicit HeldFolder(std::string_view folder, std::optional<FolderIdentity> expected = std::nullopt,
                        std::string_view alsoAs = {});

    /// Whether a folder is held.
    [[nodiscard]] bool valid() const { return m_fd != nullptr; }
    /// The folder as written, normalised ("" when the path given was relative).
    [[nodiscard]] const std::string& path() const { return m_path; }
    /// The open folder, or -1.
    [[nodiscard]] int fd() const { return m_fd ? m_fd->get() : -1; }

    /// The components of target below the held folder: after lexical normalisation ("." and empty components
    /// dropped, ".." taking the one before it away, never above "/", trailing slashes ignored), what follows the
    /// held folder's own components (or `alsoAs`', replaced by its real place). Nothing when target is relative,
    /// holds a NUL byte, is the held folder itself or an ancestor of it, or lies elsewhere. The components given
    /// are exactly the names that will be opened.
    [[nodiscard]] std::optional<std::vector<std::string>> componentsInside(std::string_view target) const;

    /// Whether componentsInside finds target strictly inside the held folder.
    [[nodiscard]] bool admits(std::string_view target) const { return componentsInside(target).has_value(); }

    /// Opens the folder that the components name below the held folder (the held folder itself for none), one
    /// component at a time without following a link. A removal stays on the held folder's mount; a measurement
    /// may pass other mounts on the way, as `du` does. When it cannot, the descriptor is not valid and `failure`
    /// says why.
    enum class Mounts { HeldOnly, Any };
    [[nodiscard]] UniqueFd openFolder(std::span<const std::string> components, Reach& failure,
                                      Mounts mounts = Mounts::HeldOnly) const;

    /// Whether the folder open at fd lies on the held folder's own file system and mount. A folder of the same
    /// file system mounted a second time (a bind mount of a folder from elsewhere) has the same device but a mount
    /// of its own, and what lies there is not the held folder's.
    [[nodiscard]] bool onHeldMount(int fd) const;
    /// The held folder's device.
    [[nodiscard]] dev_t device() const { return m_device; }

private:
    std::string m_path;
    std::vector<std::string> m_components;
    std::string m_alias;
    std::vector<std::string> m_aliasComponents;
    std::vector<std::string> m_aliasInside; // the alias's real place below the held folder
    std::shared_ptr<UniqueFd> m_fd;
    dev_t m_device = 0;
    std::optional<std::uint64_t> m_mountId;
};

/// The components of an absolute path after lexical normalisation (see componentsInside); nothing for a relative
/// path or one holding a NUL byte. "/" gives an empty list.
[[nodiscard]] std::optional<std::vector<std::string>> normalisedComponents(std::string_view path);

/// The mount a folder open at fd is reached through, where the system tells.
[[nodiscard]] std::optional<std::uint64_t> mountIdOf(int fd);

} // namespace tidewell
