#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "base/file_url.hpp"
#include "layout/disk_layout.hpp"

namespace tidewell {

/// The disk Tidewell looks at: a folder ("/" by default), the layout it follows, and the login name whose home
/// folder the layout places (<root>/Users/<login name> on a macOS disk). Every fixed "/..." path of the catalogue
/// is resolved under the root.
class DiskRoot {
public:
    /// Checks and normalises a root folder and a login name. The root is made absolute against the current
    /// folder and its links are resolved (the catalogue names real locations); it must name an existing folder.
    /// The login name must be a single path component (no "/", not "." or "..", not empty), so the home folder
    /// can never lie outside the layout's folder of homes.
    static std::expected<DiskRoot, std::string> make(std::string_view rootDir, std::string_view loginName,
                                                     const DiskLayout& layout = macosLayout());

    /// The disk that the options --root, --user and --layout name. The layout is "macos", "linux", or "auto":
    /// macOS when <root>/Users/<login name> is a folder, Linux otherwise. A Linux home is <root>/home/<login name>
    /// under a given root; on the live system (no root given) it is the home the user database gives the login
    /// name (which may be /root, or reached through a link), and /home/<login name> for a name it does not know.
    /// Errors are make's, and an unknown layout name.
    static std::expected<DiskRoot, std::string> open(std::optional<std::string_view> rootDir, std::string_view loginName,
                                                     std::string_view layoutName);

    /// The login name of the process owner, from the user database (never $HOME or $USER).
    static std::string processLoginName();

    /// The root without a trailing slash: "" for "/", "/tmp/disk" for "/tmp/disk/".
    [[nodiscard]] const std::string& rootPrefix() const { return m_root; }
    [[nodiscard]] const std::string& loginName() const { return m_login; }
    [[nodiscard]] const DiskLayout& layout() const { return *m_layout; }

    /// A fixed absolute path of the layout, under the root: "/Applications/Safari.app" on the root "/tmp/d" is
    /// "/tmp/d/Applications/Safari.app".
    [[nodiscard]] std::string resolve(std::string_view absolutePath) const;

    /// Checks the home folder before a command works in it: something must be there, and under a disk root other
    /// than "/" it must resolve, its links followed, to a folder inside that root (a home that leads elsewhere
    /// would take the clean off the disk). On the root "/" a home reached through links (a /Users or /home that
    /// links to another volume) is the user's real home and is taken. The error names the folder looked for.
    struct HomeProblem {
        bool missing = false; // nothing at all is there
        std::string message;
    };
    [[nodiscard]] std::expected<void, HomeProblem> checkHome() const;

    /// The home folder the layout places, <root>/Users/<login name> on a macOS disk (or the user database's home
    /// on the live Linux system), as a path and as a file URL (the user's real home, never a container).
    [[nodiscard]] std::string homePath() const;
    [[nodiscard]] FileUrl homeUrl() const { return FileUrl{homePath()}; }
    /// A location relative to the home folder.
    [[nodiscard]] FileUrl inHome(std::string_view relative) const { return homeUrl().appending(relative); }

    /// A path another program recorded on this disk when it was the running system's ("/Users/ann/Library/..."),
    /// as it lies under the root: the home as the layout names it (<homes>/<login name>) replaced by the home
    /// folder. Only a path strictly inside that home is taken, each component below it a plain name (no "..",
    /// ".", empty component or NUL byte, which the kernel would read otherwise), so the result never leaves the
    /// home. On the root "/" the recorded path is already where it lies, and is given back unchanged. Nothing for
    /// any other path.
    [[nodiscard]] std::optional<std::string> recordedInHome(std::string_view recorded) const;

    /// The file-existence test the builders make on an application ("/Applications/Safari.app"): true when
    /// something exists at the resolved path (links followed, as a presence test should).
    [[nodiscard]] bool exists(std::string_view absolutePath) const;

private:
    DiskRoot(std::string root, std::string login, const DiskLayout& layout)
        : m_root(std::move(root)), m_login(std::move(login)), m_layout(&layout) {}

    std::string m_root;
    std::string m_login;
    // The home the user database gives, on the live system; empty when the layout places it.
    std::string m_home;
    const DiskLayout* m_layout;
};

} // namespace tidewell
