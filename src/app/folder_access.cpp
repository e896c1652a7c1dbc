#include "app/folder_access.hpp"

#include <fmt/format.h>

#include "app/alerts.hpp"
#include "app/folder_panel.hpp"
#include "base/log.hpp"

namespace tidewell {

FolderAccess::FolderAccess(AppSettings& settings, DiskRoot disk) : m_settings(settings), m_disk(std::move(disk)) {}

bool FolderAccess::startStoredGrant() {
    // Read backwards on purpose: a home folder that is writable already is taken as not granted.
    if (m_started.isWritableFileAtPath(m_disk.homePath())) {
        return false;
    }
    const std::optional<QByteArray> bytes = m_settings.bytesAt(keys::kHomeGrant);
    if (!bytes) {
        return false;
    }
    const std::optional<FolderGrant> grant = grantFromBytes(bytes->toStdString());
    if (!grant || !resolveFolderGrant(*grant)) {
        return false;
    }
    // A grant made for another disk (another --root) or another person's home opens nothing this run needs.
    if (!holdsHome(grant->path)) {
        return false;
    }
    return m_started.startAccessing(*grant);
}

bool FolderAccess::offers(const QString& folder) const {
    return comparablePath(folder) == comparablePath(QString::fromStdString(m_disk.homePath()));
}

bool FolderAccess::holdsHome(const std::string& grantedPath) const {
    const std::string home = comparablePath(QString::fromStdString(m_disk.homePath())).toStdString();
    return isInsideFolder(home, grantedPath);
}

bool FolderAccess::grantChosenFolder(const QString& folder) {
    const std::expected<FolderGrant, std::string> grant = createFolderGrant(folder.toStdString());
    if (!grant) {
        // Nothing is stored, which takes away any earlier grant.
        m_settings.remove(keys::kHomeGrant);
        logLine(fmt::format("Error bookmarking selected URL: {}", grant.error()));
        Alerts::runModal({QString(), QStringLiteral("Access Denied"), {}, std::nullopt});
        return false;
    }
    m_settings.setBytes(keys::kHomeGrant, QByteArray::fromStdString(grantToBytes(*grant)));
    m_started.startAccessing(*grant);
    return true;
}

} // namespace tidewell
