#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "base/file_url.hpp"

namespace tidewell {

class Record;

/// Records are shared, never copied: the details panel, the cleaning engine and the catalogue all see the very
/// record the scan built.
using RecordPtr = std::shared_ptr<Record>;
using RecordList = std::vector<RecordPtr>;
using UrlList = std::vector<FileUrl>;

/// One value of a record. Booleans stay booleans and whole numbers stay numbers (the JSON export shows which is
/// which), but they compare as numbers: true equals 1 and false equals 0.
using Value = std::variant<bool, std::int64_t, std::string, FileUrl, UrlList, RecordList>;

/// A tick as a check box holds it: on, off or mixed (some but not all items of a section or caption ticked).
enum class Tick : std::int64_t { Off = 0, On = 1, Mixed = -1 };

/// A string-keyed, mutable record: a catalogue section ("Name", "List", "Size", "Img", "isChecked", "isEnabled",
/// "isFromThornsweep"), an item ("AllList", "NameText", "isChecked", "sizeText", "isExt", "isHeader", "isEnabled",
/// "Path"), or an extension record. Keys keep the order in which they were first set.
class Record {
public:
    Record() = default;
    Record(std::initializer_list<std::pair<std::string, Value>> entries);

    /// Sets a key; a key already present keeps its place, a new key goes last.
    void set(std::string_view key, Value value);
    void remove(std::string_view key);

    [[nodiscard]] bool has(std::string_view key) const { return find(key) != nullptr; }
    [[nodiscard]] const Value* find(std::string_view key) const;

    /// The value as a number when it is a boolean or a whole number; nothing when absent or of another kind.
    [[nodiscard]] std::optional<std::int64_t> number(std::string_view key) const;
    /// The truth of a key: an absent key, false and 0 read false; true and every other number read true.
    [[nodiscard]] bool flag(std::string_view key) const;
    /// The text under a key, or "" when absent or not text.
    [[nodiscard]] const std::string& text(std::string_view key) const;
    /// The URL under a key, when the key holds one.
    [[nodiscard]] const FileUrl* url(std::string_view key) const;
    /// The URL list under a key ("AllList"), when the key holds one.
    [[nodiscard]] const UrlList* urls(std::string_view key) const;
    /// The record list under a key ("List"), when the key holds one.
    [[nodiscard]] const RecordList* list(std::string_view key) const;

    [[nodiscard]] const std::vector<std::pair<std::string, Value>>& entries() const { return m_entries; }

private:
    std::vector<std::pair<std::string, Value>> m_entries;
};

[[nodiscard]] RecordPtr makeRecord(std::initializer_list<std::pair<std::string, Value>> entries = {});

/// The filter "key != false": keeps a record whose value is not numerically 0. An absent key passes (an absent
/// value is not equal to false), and so does a mixed tick (-1).
[[nodiscard]] bool isNotFalse(const Record& record, std::string_view key);

/// The filter "key == true": keeps a record whose value is numerically 1. An absent key does not pass.
[[nodiscard]] bool isTrue(const Record& record, std::string_view key);

/// Stores a tick as the whole number a check box holds (1, 0 or -1).
void setTick(Record& record, std::string_view key, Tick tick);

} // namespace tidewell
