#include "catalogue/records.hpp"

#include <algorithm>

namespace tidewell {

Record::Record(std::initializer_list<std::pair<std::string_view, Value>> entries, RecordRole role) : m_role(role) {
    for (const auto& [key, value] : entries) {
        set(key, value);
    }
}

void Record::set(std::string_view key, Value value) {
    for (auto& entry : m_entries) {
        if (entry.first == key) {
            entry.second = std::move(value);
            return;
        }
    }
    m_entries.emplace_back(std::string(key), std::move(value));
}

void Record::remove(std::string_view key) {
    std::erase_if(m_entries, [key](const auto& entry) { return entry.first == key; });
}

const Value* Record::find(std::string_view key) const {
    const auto it = std::ranges::find_if(m_entries, [key](const auto& entry) { return entry.first == key; });
    return it == m_entries.end() ? nullptr : &it->second;
}

std::optional<std::int64_t> Record::number(std::string_view key) const {
    const Value* value = find(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (const auto* b = std::get_if<bool>(value)) {
        return *b ? 1 : 0;
    }
    if (const auto* n = std::get_if<std::int64_t>(value)) {
        return *n;
    }
    return std::nullopt;
}

bool Record::flag(std::string_view key) const {
    const auto n = number(key);
    return n.has_value() && *n != 0;
}

const std::string& Record::text(std::string_view key) const {
    static const std::string kEmpty;
    const Value* value = find(key);
    const auto* s = value == nullptr ? nullptr : std::get_if<std::string>(value);
    return s == nullptr ? kEmpty : *s;
}

const FileUrl* Record::url(std::string_view key) const {
    const Value* value = find(key);
    return value == nullptr ? nullptr : std::get_if<FileUrl>(value);
}

const UrlList* Record::urls(std::string_view key) const {
    const Value* value = find(key);
    return value == nullptr ? nullptr : std::get_if<UrlList>(value);
}

const RecordList* Record::list(std::string_view key) const {
    const Value* value = find(key);
    return value == nullptr ? nullptr : std::get_if<RecordList>(value);
}

RecordPtr makeRecord(std::initializer_list<std::pair<std::string_view, Value>> entries, RecordRole role) {
    return std::make_shared<Record>(entries, role);
}

bool isNotFalse(const Record& record, std::string_view key) {
    if (!record.has(key)) {
        return true;
    }
    const auto n = record.number(key);
    return !n.has_value() || *n != 0;
}

bool isTrue(const Record& record, std::string_view key) {
    const auto n = record.number(key);
    return n.has_value() && *n == 1;
}

void setTick(Record& record, std::string_view key, Tick tick) {
    record.set(key, static_cast<std::int64_t>(tick));
}

} // namespace tidewell
