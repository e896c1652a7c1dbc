#include "catalogue/ticks.hpp"

#include <algorithm>

namespace tidewell {

namespace {

// The row the fourth-row rule names: it never passes its tick down to its items.
constexpr std::size_t kRowThatKeepsItemTicks = 3;

bool isCaption(const Record& row) {
    return !row.flag("isHeader");
}

} // namespace

Tick checkBoxAction(const Catalogue& catalogue, std::size_t row, Tick state) {
    if (state == Tick::Mixed) {
        state = Tick::On;
    }
    const RecordPtr section = catalogue.at(row);
    if (!section) {
        return state;
    }
    const bool on = state == Tick::On;
    if (row != kRowThatKeepsItemTicks) {
        if (const RecordList* items = section->list("List")) {
            for (const RecordPtr& item : *items) {
                item->set("isChecked", on);
            }
        }
    }
    section->set("isChecked", on);
    return state;
}

bool selectionCheckBoxAction(Record& section, std::string_view toolTip, Tick& state) {
    const RecordList* list = section.list("List");
    if (list == nullptr) {
        return false;
    }
    const RecordList& rows = *list;
    const auto found =
        std::ranges::find_if(rows, [&](const RecordPtr& row) { return row->text("NameText") == toolTip; });
    if (found == rows.end()) {
        return false;
    }
    if (state == Tick::Mixed) {
        state = Tick::On;
    }
    Record& row = **found;
    setTick(row, "isChecked", state);
    if (!section.flag("isFromThornsweep")) {
        return true;
    }

    const auto index = static_cast<std::size_t>(found - rows.begin());
    if (index + 1 == rows.size()) {
        return false;
    }
    const auto groupEnd = [&](std::size_t caption) {
        std::size_t end = caption + 1;
        while (end < rows.size() && !isCaption(*rows[end])) {
            ++end;
        }
        return end;
    };
    if (isCaption(row)) {
        for (std::size_t i = index + 1; i < groupEnd(index); ++i) {
            setTick(*rows[i], "isChecked", state);
        }
        return true;
    }

    // An item: find its caption above it; with none, the first row stands in for it.
    std::size_t caption = 0;
    for (std::size_t i = index + 1; i-- > 0;) {
        if (isCaption(*rows[i])) {
            caption = i;
            break;
        }
    }
    std::size_t members = 0;
    std::size_t ticked = 0;
    for (std::size_t i = caption + 1; i < groupEnd(caption); ++i) {
        ++members;
        const Record& member = *rows[i];
        if ((member.text("NameText") == toolTip && state == Tick::On) || isTrue(member, "isChecked")) {
            ++ticked;
        }
    }
    const Tick captionTick = ticked == 0 ? Tick::Off : (ticked == members ? Tick::On : Tick::Mixed);
    setTick(*rows[caption], "isChecked", captionTick);
    return true;
}

void doneActionFromselectionView(Record& section) {
    const RecordList* list = section.list("List");
    const std::size_t total = list == nullptr ? 0 : list->size();
    const auto ticked =
        list == nullptr ? 0
                        : std::ranges::count_if(*list, [](const RecordPtr& row) { return isTrue(*row, "isChecked"); });
    const Tick tick = static_cast<std::size_t>(ticked) == total ? Tick::On : (ticked > 0 ? Tick::Mixed : Tick::Off);
    setTick(section, "isChecked", tick);
}

bool removeButtonEnabled(const Catalogue& catalogue) {
    const RecordList sections = catalogue.snapshot();
    return std::ranges::any_of(sections, [](const RecordPtr& section) { return isNotFalse(*section, "isChecked"); });
}

} // namespace tidewell
