#include "catalogue/record_views.hpp"

#include "catalogue/record_keys.hpp"

namespace tidewell {

namespace {

Tick tickOf(const Record& record) {
    const std::int64_t value = record.number(keys::kTick).value_or(0);
    return value == 1 ? Tick::On : value == -1 ? Tick::Mixed : Tick::Off;
}

} // namespace

const std::string& Item::name() const {
    return m_record->text(keys::kItemName);
}

Tick Item::tick() const {
    return tickOf(*m_record);
}

bool Item::isTicked() const {
    return isTrue(*m_record, keys::kTick);
}

void Item::setTicked(bool ticked) const {
    m_record->set(keys::kTick, ticked);
}

void Item::setTick(Tick tick) const {
    tidewell::setTick(*m_record, keys::kTick, tick);
}

bool Item::isEnabled() const {
    return m_record->flag(keys::kEnabled);
}

bool Item::isCaption() const {
    return !m_record->flag(keys::kNotCaption);
}

const UrlList* Item::locations() const {
    return m_record->urls(keys::kLocations);
}

const FileUrl* Item::historyDatabase() const {
    return m_record->url(keys::kHistoryDatabase);
}

UrlList Item::historyDatabases() const {
    if (const UrlList* all = m_record->urls(keys::kAllHistoryDatabases)) {
        return *all;
    }
    if (const FileUrl* database = historyDatabase()) {
        return {*database};
    }
    return {};
}

const std::string& Item::sizeText() const {
    return m_record->text(keys::kSizeText);
}

bool Item::hasSizeText() const {
    return m_record->has(keys::kSizeText);
}

const std::string& Section::name() const {
    return m_record->text(keys::kName);
}

std::vector<Item> Section::items() const {
    std::vector<Item> items;
    if (const RecordList* list = m_record->list(keys::kItems)) {
        items.reserve(list->size());
        for (const RecordPtr& item : *list) {
            items.emplace_back(item);
        }
    }
    return items;
}

std::size_t Section::itemCount() const {
    const RecordList* list = m_record->list(keys::kItems);
    return list != nullptr ? list->size() : 0;
}

Tick Section::tick() const {
    return tickOf(*m_record);
}

bool Section::isNotUnticked() const {
    return isNotFalse(*m_record, keys::kTick);
}

void Section::setTicked(bool ticked) const {
    m_record->set(keys::kTick, ticked);
}

void Section::setTick(Tick tick) const {
    tidewell::setTick(*m_record, keys::kTick, tick);
}

bool Section::isEnabled() const {
    return m_record->flag(keys::kEnabled);
}

const std::string& Section::sizeText() const {
    return m_record->text(keys::kSize);
}

const std::string& Section::image() const {
    return m_record->text(keys::kImage);
}

bool Section::isGrouped() const {
    return m_record->flag(keys::kGrouped);
}

std::string Section::summary() const {
    if (const std::string_view own = m_record->role().summary; !own.empty()) {
        return std::string(own);
    }
    std::string names;
    for (const Item& item : items()) {
        names += (names.empty() ? "" : ", ") + item.name();
    }
    return names;
}

std::vector<Section> sectionsOf(const RecordList& records) {
    std::vector<Section> sections;
    sections.reserve(records.size());
    for (const RecordPtr& record : records) {
        sections.emplace_back(record);
    }
    return sections;
}

} // namespace tidewell
