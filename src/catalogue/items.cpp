#include "catalogue/items.hpp"

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

std::int64_t measureItems(const RecordList& items, SizeCounter& counter) {
    std::int64_t total = 0;
    for (const RecordPtr& record : items) {
        std::int64_t itemBytes = 0;
        if (const UrlList* locations = Item(record).locations()) {
            for (const FileUrl& location : *locations) {
                itemBytes += counter.allocatedSize(location);
            }
        }
        const SizeText size = sizeTextFor(itemBytes);
        record->set(keys::kSizeText, size.text);
        record->set(keys::kEnabled, size.enabled);
        total += itemBytes;
    }
    return total;
}

} // namespace tidewell
