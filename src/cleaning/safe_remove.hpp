#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/file_url.hpp"
#include "base/held_folder.hpp"
#include "cleaning/clean_outcome.hpp"

namespace tidewell {

/// The folder Tidewell may delete in: the home folder, or the folder an access grant names, resolved once and held
/// open for a clean. Every location the cleaning removes, and every history database it changes, is reached below
/// it, never through a link, never on another mount, and the folder itself is never removed.
using DeletionBoundary = HeldFolder;

/// Why a location that could not be reached below the boundary is left as it was; `otherwise` for a folder on the
/// way that is missing or cannot be opened.
[[nodiscard]] LeftReason leftReasonFor(Reach reach, LeftReason otherwise);

/// What removing one location came to: it went, by this call; or it is left as it was, and why; or neither, as
/// there was nothing there to remove.
struct Removal {
    bool removed = false;
    std::optional<LeftReason> left;

    friend bool operator==(const Removal&, const Removal&) = default;
};

/// Removes one location permanently (a file, a link or a whole folder), but only inside the boundary:
/// - a target outside the granted folder, the folder itself or an ancestor of it is left alone (OutsideBoundary),
///   and so is one outside the folder its `within` names (OutsideOwnFolder);
/// - the components below the held folder are opened one at a time without following a link, so a link anywhere
///   on the way (even one swapped in meanwhile) ends the removal (BehindLink), and a folder on another file
///   system or mount (a second mount of a folder from elsewhere included) is never entered (OtherMount);
/// - a link, file or other non-folder is unlinked (a link goes as a link; a trailing slash changes nothing);
/// - a folder is emptied depth first and removed, iteratively, with a bounded number of open descriptors; an
///   entry that cannot be removed is passed over and the rest still goes, and the whole is NotRemovable.
/// Paths of any length work: nothing longer than one component is ever handed to the system.
[[nodiscard]] Removal removeItem(const DeletionBoundary& boundary, const FileUrl& location);
/// The same for a location given as its path, bounded by the granted folder alone.
[[nodiscard]] Removal removeItem(const DeletionBoundary& boundary, std::string_view target);

/// removeItem, noting in `outcome` what came of it: the location removed, or left as it was with the reason.
void removeInto(CleanOutcome& outcome, const DeletionBoundary& boundary, const FileUrl& location);

/// A seam for tests of races: called on the removing thread in the gap between looking at a folder and opening
/// it, with the folder above it open at parentFd and the folder's name, so a test can change the disk exactly
/// there. Empty (the default) it costs nothing. Set and clear it only while no removal runs.
using RemovalRaceHook = std::function<void(int parentFd, const std::string& name)>;
void setRemovalRaceHook(RemovalRaceHook hook);

} // namespace tidewell
