#include "catalogue/items.hpp"
#include "layout/browser_profiles.hpp"
#include "sources/builders.hpp"
#include "sources/section_recipe.hpp"

namespace tidewell {

namespace {

BuilderOutcome noSection() {
    return {};
}

} // namespace

BuilderOutcome addSafariDetails(ScanEnv& env) {
    return tableSection(env, tables::kSafari);
}

BuilderOutcome addGoogleChromeDetails(ScanEnv& env) {
    if (!env.disk.exists(tables::kChromeApp)) {
        return noSection();
    }
    const std::optional<std::vector<ChromeProfile>> profiles = readChromeProfiles(env.disk);
    if (!profiles) {
        // Chrome installed but never started: no section, and no hand-over either; the table catches up at the
        // next section.
        return BuilderOutcome{nullptr, 0, false};
    }
    const FileUrl chromeFolder = env.disk.inHome(tables::kChromeFolder);
    RecordList items;
    UrlList caches;
    for (const ChromeProfile& profile : *profiles) {
        const FileUrl profileFolder = chromeFolder.appending(profile.folder);
        const BaseResolver base = [&](tables::Base) { return profileFolder; };
        for (const tables::ItemSpec& entry : tables::kChromeProfileItems) {
            items.push_back(makeTableItem(entry, fillName(entry.name, profile.name), base));
        }
        for (const std::string_view cache : tables::kChromeProfileCaches) {
            caches.push_back(profileFolder.appending(cache));
        }
    }
    caches.push_back(env.disk.inHome(tables::kChromeCaches));
    items.push_back(getDicForList(std::move(caches), "Browser Caches", false));
    return measuredSection(env, "Chrome", std::move(items), env.disk.resolve(tables::kChromeApp));
}

BuilderOutcome addMozilaFirefoxDetails(ScanEnv& env) {
    if (!env.disk.exists(tables::kFirefoxApp)) {
        return noSection();
    }
    RecordList items;
    if (const std::optional<std::string> profile = chooseFirefoxProfile(env.disk)) {
        const FileUrl profileFolder = env.disk.inHome(tables::kFirefoxProfiles).appending(*profile);
        const BaseResolver base = [&](tables::Base which) {
            return which == tables::Base::FirefoxProfile ? profileFolder : env.disk.homeUrl();
        };
        for (const tables::ItemSpec& entry : tables::kFirefoxItems) {
            items.push_back(makeTableItem(entry, std::string(entry.name), base));
        }
    }
    return measuredSection(env, "Firefox", std::move(items), env.disk.resolve(tables::kFirefoxApp));
}

} // namespace tidewell
