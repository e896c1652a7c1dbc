#include "app/settings.hpp"

#include <QStandardPaths>

namespace tidewell {

AppSettings::AppSettings(const QString& file) : m_settings(file, QSettings::IniFormat) {}

QString AppSettings::defaultFile() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/tidewell/tidewell.conf");
}

void AppSettings::registerDefaults(const QVariantMap& defaults) {
    for (auto it = defaults.begin(); it != defaults.end(); ++it) {
        m_registered.insert(it.key(), it.value());
    }
}

bool AppSettings::hasValue(const QString& key) const {
    return isStored(key) || m_registered.contains(key);
}

bool AppSettings::isStored(const QString& key) const {
    return m_settings.contains(key);
}

QVariant AppSettings::valueAt(const QString& key) const {
    if (m_settings.contains(key)) {
        return m_settings.value(key);
    }
    return m_registered.value(key);
}

bool AppSettings::boolAt(const QString& key) const {
    return valueAt(key).toBool();
}

std::optional<QByteArray> AppSettings::bytesAt(const QString& key) const {
    const QVariant value = valueAt(key);
    if (!value.isValid()) {
        return std::nullopt;
    }
    return value.toByteArray();
}

std::optional<QPoint> AppSettings::pointAt(const QString& key) const {
    const QVariant value = valueAt(key);
    if (!value.canConvert<QPoint>() || value.typeId() != QMetaType::QPoint) {
        return std::nullopt;
    }
    return value.toPoint();
}

void AppSettings::setPoint(const QString& key, const QPoint& value) {
    m_settings.setValue(key, value);
    sync();
}

void AppSettings::setBool(const QString& key, bool value) {
    m_settings.setValue(key, value);
    sync();
}

void AppSettings::setBytes(const QString& key, const QByteArray& value) {
    m_settings.setValue(key, value);
    sync();
}

void AppSettings::remove(const QString& key) {
    m_settings.remove(key);
    sync();
}

void AppSettings::sync() {
    m_settings.sync();
}

} // namespace tidewell
