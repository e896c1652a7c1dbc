#include "catalogue/items.hpp"

#include <algorithm>

#include "base/byte_count.hpp"
#include "catalogue/record_keys.hpp"
#include "catalogue/record_views.hpp"

namespace tidewell {

RecordPtr makeItem(UrlList locations, std::string name, bool extensionRow, bool ticked) {
    const bool hasLocations = !locations.empty();
    return makeRecord({{keys::kLocations, std::move(locations)},
                       {keys::kItemName, std::move(name)},
                       {keys::kTick, ticked},
                       {keys::kSizeText, std::string("0KB")},
                       {keys::kExtensionRow, extensionRow},
                       {keys::kNotCaption, hasLocations}},
                      {RecordKind::LocationsItem});
}

MeasuredItems measureItems(const RecordList& items, SizeCounter& counter) {
    MeasuredItems measured;
    for (const RecordPtr& record : items) {
        std::int64_t itemBytes = 0;
        if (const UrlList* locations = Item(record).locations()) {
            for (const FileUrl& location : *locations) {
                const std::int64_t bytes = counter.allocatedSize(location);
                measured.locations.push_back({location.path, bytes});
                itemBytes += bytes;
            }
        }
        const SizeText size = sizeTextFor(itemBytes);
        record->set(keys::kSizeText, size.text);
        record->set(keys::kEnabled, size.enabled);
        measured.bytes += itemBytes;
    }
    return measured;
}

std::int64_t bytesCountedOnce(std::vector<MeasuredLocation> locations) {
    // Ordered component by component (a slash before any other byte), a location comes right after the one it
    // lies in or after another location inside that one; so it is inside something counted exactly when it is
    // inside the last location counted.
    const auto byComponents = [](const MeasuredLocation& a, const MeasuredLocation& b) {
        const auto rank = [](char c) { return c == '/' ? 0 : static_cast<unsigned char>(c) + 1; };
        return std::ranges::lexicographical_compare(a.path, b.path, {}, rank, rank);
    };
    std::ranges::sort(locations, byComponents);
    std::int64_t total = 0;
    const std::string* counted = nullptr;
    for (const MeasuredLocation& location : locations) {
        if (counted != nullptr && (location.path == *counted || (location.path.starts_with(*counted) &&
                                                                 location.path[counted->size()] == '/'))) {
            continue;
        }
        total += location.bytes;
        counted = &location.path;
    }
    return total;
}

} // namespace tidewell
