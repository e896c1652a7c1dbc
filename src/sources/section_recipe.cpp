#include "sources/section_recipe.hpp"

#include "base/byte_count.hpp"
#include "catalogue/items.hpp"

namespace tidewell {

UrlList resolveLocations(const tables::ItemSpec& entry, const BaseResolver& base) {
    UrlList locations;
    locations.reserve(entry.locations.size());
    for (const tables::Location& location : entry.locations) {
        locations.push_back(base(location.base).appending(location.path));
    }
    return locations;
}

RecordPtr makeTableItem(const tables::ItemSpec& entry, std::string name, const BaseResolver& base) {
    if (entry.handMade) {
        return makeRecord({{"AllList", resolveLocations(entry, base)},
                           {"NameText", std::move(name)},
                           {"isChecked", false},
                           {"sizeText", std::string("10KB")}});
    }
    return getDicForList(resolveLocations(entry, base), std::move(name), false);
}

BuilderOutcome measuredSection(ScanEnv& env, std::string name, RecordList items, std::string image) {
    const std::int64_t bytes = countSize(items, env.sizes);
    const SizeText size = sizeTextFor(bytes);
    auto section = makeRecord({{"Name", std::move(name)},
                               {"List", std::move(items)},
                               {"Size", size.text},
                               {"Img", std::move(image)},
                               {"isChecked", true},
                               {"isEnabled", size.enabled},
                               {"isFromThornsweep", false}});
    return {std::move(section), bytes, true};
}

BuilderOutcome tableSection(ScanEnv& env, const tables::SourceSpec& source) {
    if (!env.disk.exists(source.app)) {
        return {};
    }
    const BaseResolver base = [&](tables::Base which) {
        switch (which) {
        case tables::Base::SafariFolder:
            return env.disk.inHome(tables::kSafariFolder);
        case tables::Base::MailLibrary:
            return env.disk.inHome(tables::kMailLibrary);
        default:
            return env.disk.homeUrl();
        }
    };
    RecordList items;
    for (const tables::ItemSpec& entry : source.items) {
        items.push_back(makeTableItem(entry, std::string(entry.name), base));
    }
    return measuredSection(env, std::string(source.title), std::move(items), env.disk.resolve(source.app));
}

std::string fillName(std::string_view nameTemplate, std::string_view value) {
    std::string out(nameTemplate);
    if (const auto at = out.find("%@"); at != std::string::npos) {
        out.replace(at, 2, value);
    }
    return out;
}

} // namespace tidewell
