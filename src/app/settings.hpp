#pragma once

#include <QByteArray>
#include <QPoint>
#include <QSettings>
#include <QString>
#include <QVariantMap>
#include <optional>

namespace tidewell {

/// The keys of Tidewell's settings, the complete set it reads or writes.
namespace keys {
/// bool, registered YES at every start (never stored): lets an uncaught exception end the process so that the
/// crash reporter records it.
inline const QString kCrashOnExceptions = QStringLiteral("NSApplicationCrashOnExceptions");
/// bool, written NO at start and at exit; nothing reads it.
inline const QString kScanFlag = QStringLiteral("Scan");
/// bool, real-time scan on or off; absent reads as on.
inline const QString kRealTimeScan = QStringLiteral("RealTimeScanONOFF");
/// bool, start at login; absent reads as on and is written back.
inline const QString kRunAtStart = QStringLiteral("kIsRunOnStart");
/// bool, YES gives the main window a taskbar entry; absent reads as NO and is written back.
inline const QString kTaskbarEntry = QStringLiteral("IsDockIcon");
/// point, where the main window's top-left corner was last (in the desktop's coordinates).
inline const QString kWindowPosition = QStringLiteral("MainWindowPosition");
/// bytes, the person's ticks by section and item name (JSON), so they outlive a scan, a clean and a restart.
inline const QString kSelection = QStringLiteral("Selection");
/// bytes, the grant for the home folder (or whichever of the offered folders the person chose).
inline const QString kHomeGrant = QStringLiteral("SaveDirectory");
} // namespace keys

/// Tidewell's stored settings: one settings file, plus defaults registered in memory that are consulted for an
/// absent key and never written. Every write reaches the file at once.
class AppSettings {
public:
    /// The settings kept in file (an INI file, made on first write).
    explicit AppSettings(const QString& file);

    /// <user configuration folder>/tidewell/tidewell.conf ($XDG_CONFIG_HOME or ~/.config).
    static QString defaultFile();

    /// Adds defaults for absent keys, in memory only; a later registration of a key replaces the earlier.
    void registerDefaults(const QVariantMap& defaults);

    /// Whether the key holds a value: a stored one, or else a registered default.
    [[nodiscard]] bool hasValue(const QString& key) const;
    /// Whether the key holds a stored value (registered defaults do not count).
    [[nodiscard]] bool isStored(const QString& key) const;

    /// The key's value as a bool: the stored value, else the registered default, else false.
    [[nodiscard]] bool boolAt(const QString& key) const;
    /// The key's bytes, or nothing when absent.
    [[nodiscard]] std::optional<QByteArray> bytesAt(const QString& key) const;

    /// The key's point, or nothing when absent or not a point.
    [[nodiscard]] std::optional<QPoint> pointAt(const QString& key) const;

    /// Stores a value and writes the file.
    void setBool(const QString& key, bool value);
    void setBytes(const QString& key, const QByteArray& value);
    void setPoint(const QString& key, const QPoint& value);
    /// Removes a stored value and writes the file; the registered default, if any, shows through again.
    void remove(const QString& key);

    /// Writes pending changes to the file and reads changes made by others.
    void sync();

    /// The settings file.
    [[nodiscard]] QString fileName() const { return m_settings.fileName(); }

private:
    [[nodiscard]] QVariant valueAt(const QString& key) const;

    QSettings m_settings;
    QVariantMap m_registered;
};

} // namespace tidewell
