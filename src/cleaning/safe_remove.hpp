#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

/// A set of places below the boundary: those a clean keeps although a ticked location holds them or is them (every
/// location an unticked item names), or those a preview has already counted as gone. Each is turned once into its
/// components below the boundary, the way the removal will open them, so a place is recognised however the
/// catalogue spells it.
class PlaceSet {
public:
    PlaceSet() = default;
    PlaceSet(const DeletionBoundary& boundary, const UrlList& places);

    /// Adds one place (nothing for a place outside the boundary).
    void add(const DeletionBoundary& boundary, const std::string& place);

    /// One folder level of the kept places: `whole` when a kept place is this very entry (it stays with all it
    /// holds), and the entries below it that lead to kept places.
    struct Node {
        bool whole = false;
        std::string location; // the kept place as the catalogue gives it, when whole
        std::map<std::string, Node, std::less<>> below;
    };

    [[nodiscard]] bool empty() const { return m_root.below.empty(); }
    /// The node of the location with these components below the boundary, or null when nothing kept is at it or
    /// inside it.
    [[nodiscard]] const Node* find(const std::vector<std::string>& components) const;

private:
    Node m_root;
};

/// What removing one location came to: it went, by this call; or it is left as it was, and why; or neither, as
/// there was nothing there to remove. A folder holding a kept place is emptied of everything else: it counts as
/// left (UntickedInside), and `kept` names the kept places found in it.
struct Removal {
    Removal() = default;
    Removal(bool removedAll, std::optional<LeftReason> leftReason) : removed(removedAll), left(leftReason) {}

    bool removed = false;
    std::optional<LeftReason> left;
    /// The bytes on disk of the files, links and other non-folders this removal unlinked (a file's blocks, as
    /// measuring counts them), companions of a database included.
    std::uint64_t bytes = 0;
    std::vector<std::string> kept;
    /// Something went (or, previewed, would go), though not all of it.
    bool someWent = false;
    /// The companions of a database that went with it (or would), as paths beside the location.
    std::vector<std::string> companions;

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
/// - a SQLite database goes with its companions: the "-wal", "-shm" and "-journal" files beside it, which can
///   still hold its data;
/// - what `kept` names stays: a kept location is left whole (UntickedInside), and a folder with a kept place
///   inside keeps the folders on the way to it and loses everything else.
/// Paths of any length work: nothing longer than one component is ever handed to the system.
[[nodiscard]] Removal removeItem(const DeletionBoundary& boundary, const FileUrl& location, const PlaceSet& kept = {});
/// The same for a location given as its path, bounded by the granted folder alone.
[[nodiscard]] Removal removeItem(const DeletionBoundary& boundary, std::string_view target);

/// What removing a location would come to, changing nothing: the same walk as removeItem, through the same
/// checks, counting the bytes of what would be unlinked. `removed` says that something would go.
/// What `gone` holds (the locations a preview has already counted, and what it emptied) counts as not there any
/// more, unless a kept place inside it stays.
[[nodiscard]] Removal previewRemoval(const DeletionBoundary& boundary, const FileUrl& location,
                                     const PlaceSet& kept = {}, const PlaceSet& gone = {});

/// Whether a preview has counted the place as gone already: it lies at or in a place of `gone`, and no kept place
/// lies between that one and it.
[[nodiscard]] bool countedAsGone(const DeletionBoundary& boundary, const std::string& place, const PlaceSet& kept,
                                 const PlaceSet& gone);

/// removeItem, noting in `outcome` what came of it: the location removed with its bytes, or left as it was with
/// the reason (for a folder emptied around kept places: each kept place, and the bytes of the rest as removed).
void removeInto(CleanOutcome& outcome, const DeletionBoundary& boundary, const FileUrl& location,
                const PlaceSet& kept = {});
/// Notes in `outcome` what a removal (or a preview of one) of the location came to, as removeInto does.
void noteRemoval(CleanOutcome& outcome, const FileUrl& location, const Removal& removal);

/// A seam for tests of races: called on the removing thread in the gap between looking at a folder and opening
/// it, with the folder above it open at parentFd and the folder's name, so a test can change the disk exactly
/// there. Empty (the default) it costs nothing. Set and clear it only while no removal runs.
using RemovalRaceHook = std::function<void(int parentFd, const std::string& name)>;
void setRemovalRaceHook(RemovalRaceHook hook);

} // namespace tidewell
