#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/records.hpp"

namespace tidewell {

/// An item of a section, read and changed through its keys. It shares the record: what it changes, every holder
/// of the record sees.
class Item {
public:
    explicit Item(RecordPtr record) : m_record(std::move(record)) {}

    [[nodiscard]] const RecordPtr& record() const { return m_record; }
    [[nodiscard]] RecordKind kind() const { return m_record->role().kind; }
    /// The browser whose history database an Adult History item purges, or null.
    [[nodiscard]] const Browser* browser() const { return m_record->role().browser; }

    /// "NameText".
    [[nodiscard]] const std::string& name() const;
    /// The tick as its box shows it: on for 1 (or true), mixed for -1, off otherwise (also when absent).
    [[nodiscard]] Tick tick() const;
    /// Whether the tick is exactly on (1 or true): what a clean takes.
    [[nodiscard]] bool isTicked() const;
    /// Stores the tick as a boolean, as the item table's box does.
    void setTicked(bool ticked) const;
    /// Stores the tick as the number a box holds (1, 0 or -1), as the details panel's box does.
    void setTick(Tick tick) const;
    [[nodiscard]] bool isEnabled() const;
    /// A caption of a grouped section: its "isHeader" is false (or absent).
    [[nodiscard]] bool isCaption() const;
    /// The locations a clean removes ("AllList"), or null when the item has none.
    [[nodiscard]] const UrlList* locations() const;
    /// The history database an Adult History item purges ("Path"), or null.
    [[nodiscard]] const FileUrl* historyDatabase() const;
    /// Every history database an Adult History item purges: "AllPaths" when it has them, else "Path" alone;
    /// empty when it has neither.
    [[nodiscard]] UrlList historyDatabases() const;
    /// "sizeText", "" when absent.
    [[nodiscard]] const std::string& sizeText() const;
    [[nodiscard]] bool hasSizeText() const;

private:
    RecordPtr m_record;
};

/// A section of the catalogue, read and changed through its keys, sharing its record.
class Section {
public:
    explicit Section(RecordPtr record) : m_record(std::move(record)) {}

    [[nodiscard]] const RecordPtr& record() const { return m_record; }
    [[nodiscard]] RecordKind kind() const { return m_record->role().kind; }
    /// The browser a browser's section stands for, or null.
    [[nodiscard]] const Browser* browser() const { return m_record->role().browser; }
    /// The promotion row, which has no name, items, tick or size.
    [[nodiscard]] bool isPromotion() const { return kind() == RecordKind::PromotionRow; }

    /// "Name".
    [[nodiscard]] const std::string& name() const;
    /// The items, in order ("List"); none when it has no list.
    [[nodiscard]] std::vector<Item> items() const;
    [[nodiscard]] std::size_t itemCount() const;
    /// The tick as its box shows it (see Item::tick).
    [[nodiscard]] Tick tick() const;
    /// Whether the tick is anything but off: a section that is absent of the key (the promotion row) or mixed
    /// counts.
    [[nodiscard]] bool isNotUnticked() const;
    void setTicked(bool ticked) const;
    void setTick(Tick tick) const;
    [[nodiscard]] bool isEnabled() const;
    /// "Size": the measured total as text ("" for a section that is not measured).
    [[nodiscard]] const std::string& sizeText() const;
    /// "Img".
    [[nodiscard]] const std::string& image() const;
    /// Whether its rows are grouped under captions ("isFromThornsweep").
    [[nodiscard]] bool isGrouped() const;
    /// The window's image for it.
    [[nodiscard]] std::string_view icon() const { return m_record->role().icon; }
    /// The one-line summary a face shows under its name: its own, or else its items' names joined by ", ".
    [[nodiscard]] std::string summary() const;

private:
    RecordPtr m_record;
};

/// The sections of a list of records, in order.
[[nodiscard]] std::vector<Section> sectionsOf(const RecordList& records);

} // namespace tidewell
