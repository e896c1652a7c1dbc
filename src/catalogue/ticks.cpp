#include "catalogue/ticks.hpp"

#include <algorithm>

namespace tidewell {

Tick tickSection(const Catalogue& catalogue, std::size_t row, Tick state) {
    if (state == Tick::Mixed) {
        state = Tick::On;
    }
    const RecordPtr record = catalogue.at(row);
    if (!record) {
        return state;
    }
    const Section section(record);
    const bool on = state == Tick::On;
    // Every section passes its tick down, whatever its row: a person who unticks "Adult History" means its
    // purges too, and the clean follows the items' ticks.
    for (Item& item : section.items()) {
        item.setTicked(on);
    }
    section.setTicked(on);
    return state;
}

bool tickItemNamed(const Section& section, std::string_view name, Tick& state) {
    std::vector<Item> rows = section.items();
    const auto found = std::ranges::find_if(rows, [&](const Item& row) { return row.name() == name; });
    if (found == rows.end()) {
        return false;
    }
    if (state == Tick::Mixed) {
        state = Tick::On;
    }
    found->setTick(state);
    if (!section.isGrouped()) {
        return true;
    }

    const auto index = static_cast<std::size_t>(found - rows.begin());
    if (index + 1 == rows.size()) {
        return false;
    }
    const auto groupEnd = [&](std::size_t caption) {
        std::size_t end = caption + 1;
        while (end < rows.size() && !rows[end].isCaption()) {
            ++end;
        }
        return end;
    };
    if (found->isCaption()) {
        for (std::size_t i = index + 1; i < groupEnd(index); ++i) {
            rows[i].setTick(state);
        }
        return true;
    }

    // An item: find its caption above it; with none, the first row stands in for it.
    std::size_t caption = 0;
    for (std::size_t i = index + 1; i-- > 0;) {
        if (rows[i].isCaption()) {
            caption = i;
            break;
        }
    }
    std::size_t members = 0;
    std::size_t ticked = 0;
    for (std::size_t i = caption + 1; i < groupEnd(caption); ++i) {
        ++members;
        if ((rows[i].name() == name && state == Tick::On) || rows[i].isTicked()) {
            ++ticked;
        }
    }
    rows[caption].setTick(ticked == 0 ? Tick::Off : (ticked == members ? Tick::On : Tick::Mixed));
    return true;
}

void settleSectionTick(const Section& section) {
    const std::vector<Item> rows = section.items();
    const auto ticked = std::ranges::count_if(rows, [](const Item& row) { return row.isTicked(); });
    const Tick tick =
        static_cast<std::size_t>(ticked) == rows.size() ? Tick::On : (ticked > 0 ? Tick::Mixed : Tick::Off);
    section.setTick(tick);
}

bool anythingToClean(const Catalogue& catalogue) {
    return std::ranges::any_of(sectionsOf(catalogue.snapshot()),
                               [](const Section& section) { return section.isNotUnticked(); });
}

} // namespace tidewell
