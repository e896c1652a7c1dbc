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
struct Browser;

/// Records are shared, never copied: the details panel, the cleaning engine and the catalogue all see the very
/// record the scan built.
using RecordPtr = std::shared_ptr<Record>;
using RecordList = std::vector<RecordPtr>;

/// One value of a record. Booleans stay booleans and whole numbers stay numbers (the JSON export shows which is
/// which), but they compare as numbers: true equals 1 and false equals 0.
using Value = std::variant<bool, std::int64_t, std::string, FileUrl, UrlList, RecordList>;

/// A tick as a check box holds it: on, off or mixed (some but not all items of a section or caption ticked).
enum class Tick : std::int64_t { Off = 0, On = 1, Mixed = -1 };

/// What a record stands for, as the builder that made it says.
enum class RecordKind : std::uint8_t {
    Unmarked,            // a record no builder marked: an extension record, one made by hand
    SourceSection,       // the section of a source's table: Safari, Chrome, Firefox, System, Mail, Flash
    AdultHistorySection, // "Adult History"
    ExtensionsSection,   // "Browser Extensions"
    PromotionRow,        // the last row, which points to a sibling product
    LocationsItem,       // an item whose locations a clean removes
    HistoryItem,         // an Adult History item: a clean purges its browser's history database
    BrowserEntry,        // a running browser, as the browser panel lists it
};

/// The part of a record that is not among its keys: never exported, never shown as text. Behaviour is chosen by
/// it (the kind, the browser), never by a record's display text.
struct RecordRole {
    RecordKind kind = RecordKind::Unmarked;
    /// The browser a section, item or panel entry stands for, or null.
    const Browser* browser = nullptr;
    /// The window's image for a section or a panel entry.
    std::string_view icon = {};
    /// A section's one-line summary, when it has one of its own (else a face lists its item names).
    std::string_view summary = {};
    /// What a tick of this row removes that a person would miss ("saved passwords"), for the one-line warning the
    /// window shows when it is ticked; empty for an ordinary row.
    std::string_view tickWarning = {};
};

/// A string-keyed, mutable record: a catalogue section, an item, an extension record or a browser panel entry,
/// with the keys of catalogue/record_keys.hpp. Keys keep the order in which they were first set.
class Record {
public:
    Record() = default;
    Record(std::initializer_list<std::pair<std::string_view, Value>> entries, RecordRole role = {});

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

    [[nodiscard]] const RecordRole& role() const { return m_role; }
    void setRole(RecordRole role) { m_role = role; }

private:
    std::vector<std::pair<std::string, Value>> m_entries;
    RecordRole m_role;
};

[[nodiscard]] RecordPtr makeRecord(std::initializer_list<std::pair<std::string_view, Value>> entries = {},
                                   RecordRole role = {});

/// The filter "key != false": keeps a record whose value is not numerically 0. An absent key passes (an absent
/// value is not equal to false), and so does a mixed tick (-1).
[[nodiscard]] bool isNotFalse(const Record& record, std::string_view key);

/// The filter "key == true": keeps a record whose value is numerically 1. An absent key does not pass.
[[nodiscard]] bool isTrue(const Record& record, std::string_view key);

/// Stores a tick as the whole number a check box holds (1, 0 or -1).
void setTick(Record& record, std::string_view key, Tick tick);

} // namespace tidewell
