#include "catalogue/items.hpp"

#include "base/byte_count.hpp"

namespace tidewell {

RecordPtr getDicForList(UrlList list, std::string type, bool isExt) {
    const bool isHeader = !list.empty();
    const bool isChecked = type != "Downloads";
    return makeRecord({{"AllList", std::move(list)},
                       {"NameText", std::move(type)},
                       {"isChecked", isChecked},
                       {"sizeText", std::string("0KB")},
                       {"isExt", isExt},
                       {"isHeader", isHeader}});
}

std::int64_t countSize(const RecordList& items, SizeCounter& counter) {
    std::int64_t total = 0;
    for (const RecordPtr& item : items) {
        std::int64_t itemBytes = 0;
        if (const UrlList* locations = item->urls("AllList")) {
            for (const FileUrl& location : *locations) {
                itemBytes += counter.fileSizeOf(location);
            }
        }
        const SizeText size = sizeTextFor(itemBytes);
        item->set("sizeText", size.text);
        item->set("isEnabled", size.enabled);
        total += itemBytes;
    }
    return total;
}

} // namespace tidewell
