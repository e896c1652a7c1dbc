#include "ui/selection_memory.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include "catalogue/ticks.hpp"

namespace tidewell {

namespace {

const QString kTickKey = QStringLiteral("tick");
const QString kItemsKey = QStringLiteral("items");

QJsonObject parsed(const QByteArray& remembered) {
    const QJsonDocument document = QJsonDocument::fromJson(remembered);
    return document.isObject() ? document.object() : QJsonObject();
}

Tick tickOf(const QJsonValue& value) {
    switch (value.toInt(0)) {
    case 1:
        return Tick::On;
    case -1:
        return Tick::Mixed;
    default:
        return Tick::Off;
    }
}

QString nameOf(const std::string& name) {
    return QString::fromStdString(name);
}

} // namespace

QByteArray rememberedSelection(const std::vector<Section>& sections, const QByteArray& remembered) {
    QJsonObject all = parsed(remembered);
    for (const Section& section : sections) {
        if (section.isPromotion() || section.name().empty()) {
            continue;
        }
        QMap<QString, QJsonArray> byName;
        for (const Item& item : section.items()) {
            byName[nameOf(item.name())].append(static_cast<int>(item.tick()));
        }
        QJsonObject items;
        for (auto it = byName.cbegin(); it != byName.cend(); ++it) {
            items.insert(it.key(), it.value());
        }
        all.insert(nameOf(section.name()),
                   QJsonObject{{kTickKey, static_cast<int>(section.tick())}, {kItemsKey, items}});
    }
    return QJsonDocument(all).toJson(QJsonDocument::Compact);
}

bool restoreSelection(const Section& section, const QByteArray& remembered) {
    if (section.isPromotion()) {
        return false;
    }
    const QJsonValue entry = parsed(remembered).value(nameOf(section.name()));
    if (!entry.isObject()) {
        return false;
    }
    const QJsonObject items = entry.toObject().value(kItemsKey).toObject();
    QMap<QString, qsizetype> seen;
    bool everyItemRemembered = true;
    for (const Item& item : section.items()) {
        const QString name = nameOf(item.name());
        const QJsonArray ticks = items.value(name).toArray();
        const qsizetype occurrence = seen[name]++;
        if (occurrence < ticks.size()) {
            item.setTick(tickOf(ticks.at(occurrence)));
        } else {
            everyItemRemembered = false;
        }
    }
    if (everyItemRemembered && entry.toObject().contains(kTickKey)) {
        section.setTick(tickOf(entry.toObject().value(kTickKey)));
    } else {
        settleSectionTick(section);
    }
    return true;
}

} // namespace tidewell
