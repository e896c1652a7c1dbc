#pragma once

#include <QString>
#include <optional>
#include <string>

#include "app/settings.hpp"
#include "layout/disk_root.hpp"
#include "platform/folder_grant.hpp"

namespace tidewell {

/// Tidewell's access to the home folder: the grant the person gives once in the access window, stored at
/// "SaveDirectory" and started again at every start. The first started grant's folder is the boundary no clean
/// crosses; before a grant is started nothing may be removed at all.
class FolderAccess {
public:
    /// Access to disk's home, with the grant kept in settings.
    FolderAccess(AppSettings& settings, DiskRoot disk);

    /// The start-up's check: starts the stored grant and says whether the main window may come. False when the home
    /// folder is already writable through a started grant (read backwards on purpose, so the second check in a
    /// process says false), false when "SaveDirectory" holds nothing, and false when the stored grant no longer
    /// resolves (moved, damaged), does not hold the disk's home, or cannot be started.
    bool startStoredGrant();

    /// Whether the access window's panel offers (and accepts) folder: exactly the disk's home folder, the one
    /// folder a clean needs.
    [[nodiscard]] bool offers(const QString& folder) const;

    /// Whether a grant of grantedPath (absolute, without links) holds the disk's home folder. A stored grant that
    /// does not (made for another disk or home) is not used, and the access window asks again.
    [[nodiscard]] bool holdsHome(const std::string& grantedPath) const;

    /// Records the grant of a folder chosen in the panel at "SaveDirectory" and starts it (the choice itself opens
    /// the folder for this run). When the grant cannot be made, removes what "SaveDirectory" held, logs "Error
    /// bookmarking selected URL: <reason>" and shows the "Access Denied" alert. Returns whether the grant was made.
    bool grantChosenFolder(const QString& folder);

    /// The deletion boundary: the first started grant's folder; nothing before a grant is started.
    [[nodiscard]] std::optional<std::string> grantedFolder() const { return m_started.boundary(); }
    /// The grant of that folder, which a clean holds as its boundary.
    [[nodiscard]] std::optional<FolderGrant> startedGrant() const { return m_started.boundaryGrant(); }

    [[nodiscard]] const DiskRoot& disk() const { return m_disk; }

private:
    AppSettings& m_settings;
    DiskRoot m_disk;
    StartedGrants m_started;
};

} // namespace tidewell
