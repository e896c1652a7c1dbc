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

QVariant AppSettings::valueForKey(const QString& key) const {
    if (m_settings.contains(key)) {
        return m_settings.value(key);
    }
    return m_registered.value(key);
}

bool AppSettings::boolForKey(const QString& key) const {
    return valueForKey(key).toBool();
}

std::optional<QByteArray> AppSettings::dataForKey(const QString& key) const {
    const QVariant value = valueForKey(key);
    if (!value.isValid()) {
        return std::nullopt;
    }
    return value.toByteArray();
}

void AppSettings::setBool(const QString& key, bool value) {
    m_settings.setValue(key, value);
    synchronize();
}

void AppSettings::setData(const QString& key, const QByteArray& value) {
    m_settings.setValue(key, value);
    synchronize();
}

void AppSettings::removeObject(const QString& key) {
    m_settings.remove(key);
    synchronize();
}

void AppSettings::synchronize() {
    m_settings.sync();
}

} // namespace tidewell
