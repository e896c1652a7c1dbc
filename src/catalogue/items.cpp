#include "catalogue/items.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

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

namespace {

// What lies where the links on the way lead: the location's folder resolved, and the location measured below
// it, itself never followed.
std::int64_t sizeWhereTheLinkLeads(const std::string& path) {
    const auto slash = path.rfind('/');
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::canonical(path.substr(0, slash), error);
    if (error || slash == std::string::npos) {
        return 0;
    }
    SizeCounter there(0, {}, HeldFolder(folder.string()));
    return there.allocatedSize(joinPath(folder.string(), path.substr(slash + 1)));
}

} // namespace

bool behindALink(std::string_view home, std::string_view path) {
    if (home.empty() || !path.starts_with(home) || path.size() <= home.size() || path[home.size()] != '/') {
        return false;
    }
    // Each folder below the home on the way to the location, the location's own name excluded.
    for (auto slash = path.find('/', home.size() + 1); slash != std::string_view::npos;
         slash = path.find('/', slash + 1)) {
        struct stat st {};
        if (::lstat(std::string(path.substr(0, slash)).c_str(), &st) != 0) {
            return false;
        }
        if (S_ISLNK(st.st_mode)) {
            return true;
        }
    }
    return false;
}

MeasuredItems measureItems(const RecordList& items, SizeCounter& counter, std::string_view home) {
    MeasuredItems measured;
    for (const RecordPtr& record : items) {
        std::int64_t itemBytes = 0;
        bool linked = false;
        if (const UrlList* locations = Item(record).locations()) {
            for (const FileUrl& location : *locations) {
                if (behindALink(home, location.path)) {
                    const std::int64_t bytes = sizeWhereTheLinkLeads(location.path);
                    measured.locations.push_back({location.path, bytes, true});
                    itemBytes += bytes;
                    linked = true;
                    continue;
                }
                const std::int64_t bytes = counter.allocatedSize(location);
                measured.locations.push_back({location.path, bytes});
                itemBytes += bytes;
                measured.bytes += bytes;
            }
        }
        const SizeText size = sizeTextFor(itemBytes);
        record->set(keys::kSizeText, size.text);
        record->set(keys::kEnabled, size.enabled);
        if (linked) {
            record->set(keys::kItemName, Item(record).name() + std::string(kBehindALink));
        }
    }
    return measured;
}

std::int64_t bytesCountedOnce(std::vector<MeasuredLocation> locations) {
    std::erase_if(locations, [](const MeasuredLocation& location) { return location.behindLink; });
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
