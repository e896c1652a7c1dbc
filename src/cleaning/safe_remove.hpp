#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// The folder Tidewell may delete in: the home folder, or the folder an access grant names. Every location the
/// cleaning removes is checked against it first, and so is every history database it changes.
class DeletionBoundary {
public:
    /// grantedFolder: an absolute path; it is normalised lexically ("/Users/ann/" and "/Users//ann/." are
    /// "/Users/ann"). A relative path gives a boundary that admits nothing.
    explicit DeletionBoundary(std::string_view grantedFolder);

    /// The granted folder, normalised.
    [[nodiscard]] const std::string& grantedFolder() const { return m_granted; }

    /// The components of target below the granted folder, after lexical normalisation: "." and empty components
    /// dropped, ".." taking the component before it away (never above "/"), trailing slashes ignored. Nothing
    /// when target is relative, is the granted folder itself or one of its ancestors, or lies elsewhere.
    [[nodiscard]] std::optional<std::vector<std::string>> componentsInside(std::string_view target) const;

    /// Whether componentsInside finds target strictly inside the granted folder.
    [[nodiscard]] bool admits(std::string_view target) const { return componentsInside(target).has_value(); }

private:
    std::string m_granted;
    std::vector<std::string> m_grantedComponents;
    bool m_valid = false;
};

/// The components of an absolute path after lexical normalisation (see componentsInside); nothing for a relative
/// path. "/" gives an empty list.
[[nodiscard]] std::optional<std::vector<std::string>> normalisedComponents(std::string_view path);

/// Removes one location permanently, as `removeItemAtURL:` is asked to, but only inside the boundary:
/// - a target outside the granted folder, the folder itself or an ancestor of it is left alone;
/// - the path is walked down from the granted folder one component at a time without following a link, so a
///   link anywhere on the way (even one swapped in meanwhile) ends the removal, and a folder on another file
///   system or mount (a second mount of a folder from elsewhere included) is never entered;
/// - a link, file or other non-folder is unlinked (a link goes as a link; a trailing slash changes nothing);
/// - a folder is emptied depth first and removed, iteratively, with a bounded number of open descriptors; an
///   entry that cannot be removed is passed over and the rest still goes.
/// Returns true when the target no longer exists afterwards because this call removed it; false when it was
/// missing, refused, or only partly removed. Callers of the cleaning ignore the result.
bool removeItem(const DeletionBoundary& boundary, std::string_view target);

/// A seam for tests of races: called on the removing thread in the gap between looking at a folder and opening
/// it, with the folder above it open at parentFd and the folder's name, so a test can change the disk exactly
/// there. Empty (the default) it costs nothing. Set and clear it only while no removal runs.
using RemovalRaceHook = std::function<void(int parentFd, const std::string& name)>;
void setRemovalRaceHook(RemovalRaceHook hook);

} // namespace tidewell
