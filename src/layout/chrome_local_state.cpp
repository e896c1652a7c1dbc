#include "layout/chrome_local_state.hpp"

#include <unordered_map>

#include "base/file_url.hpp"
#include "base/json_reading.hpp"

namespace tidewell {

namespace {

// Reads "profile.info_cache" in the file's own order in one pass, keeping nothing else of the file. It keeps the
// rules a whole-document reader would: a member named twice keeps its first place and its last value, so a second
// "profile" or "info_cache" replaces the first whole, and a profile key named twice keeps its first place with
// the display name of its last value.
class ProfileRegistryReader : public nlohmann::json_sax<nlohmann::json> {
public:
    [[nodiscard]] std::vector<ChromeProfile> profiles() && {
        if (!m_topIsObject || !m_profileIsObject || !m_cacheIsObject) {
            return {};
        }
        return std::move(m_profiles);
    }

    bool null() override { return scalar(); }
    bool boolean(bool /*value*/) override { return scalar(); }
    bool number_integer(number_integer_t /*value*/) override { return scalar(); }
    bool number_unsigned(number_unsigned_t /*value*/) override { return scalar(); }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return scalar(); }
    bool binary(binary_t& /*value*/) override { return scalar(); }
    bool string(string_t& value) override {
        if (m_next == Role::Name) {
            m_profiles[m_entry].name = value;
            m_next = Role::Other;
            return true;
        }
        return scalar();
    }

    bool start_object(std::size_t /*elements*/) override {
        if (m_roles.empty()) {
            m_topIsObject = true;
            m_roles.push_back(Role::Top);
            return true;
        }
        if (m_next == Role::Profile) {
            m_profileIsObject = true;
        } else if (m_next == Role::InfoCache) {
            m_cacheIsObject = true;
        } else if (m_next == Role::Name) {
            m_profiles[m_entry].name.clear();
        }
        m_roles.push_back(m_next == Role::Name ? Role::Other : m_next);
        m_next = Role::Other;
        return true;
    }

    bool key(string_t& member) override {
        switch (m_roles.back()) {
        case Role::Top:
            m_next = member == "profile" ? Role::Profile : Role::Other;
            if (m_next == Role::Profile) {
                m_profileIsObject = false;
                m_cacheIsObject = false;
                clearProfiles();
            }
            break;
        case Role::Profile:
            m_next = member == "info_cache" ? Role::InfoCache : Role::Other;
            if (m_next == Role::InfoCache) {
                m_cacheIsObject = false;
                clearProfiles();
            }
            break;
        case Role::InfoCache:
            m_entry = entryFor(member);
            m_next = Role::Entry;
            break;
        case Role::Entry:
            m_next = member == "name" ? Role::Name : Role::Other;
            if (m_next == Role::Name) {
                m_profiles[m_entry].name.clear();
            }
            break;
        default:
            m_next = Role::Other;
        }
        return true;
    }

    bool end_object() override {
        m_roles.pop_back();
        return true;
    }
    bool start_array(std::size_t /*elements*/) override {
        scalar();
        m_roles.push_back(Role::Other);
        return true;
    }
    bool end_array() override {
        m_roles.pop_back();
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

private:
    enum class Role { Top, Profile, InfoCache, Entry, Name, Other };

    // A value that is not an object where one is looked for: a "profile" or "info_cache" that is not an object
    // lists no profiles; a profile entry or "name" of another kind names the profile with nothing.
    bool scalar() {
        if (m_next == Role::Profile) {
            m_profileIsObject = false;
        } else if (m_next == Role::InfoCache) {
            m_cacheIsObject = false;
        } else if (m_next == Role::Entry || m_next == Role::Name) {
            m_profiles[m_entry].name.clear();
        }
        m_next = Role::Other;
        return true;
    }

    std::size_t entryFor(const std::string& folder) {
        const auto [found, added] = m_places.try_emplace(folder, m_profiles.size());
        if (added) {
            m_profiles.push_back({folder, {}});
        } else {
            m_profiles[found->second].name.clear();
        }
        return found->second;
    }

    void clearProfiles() {
        m_profiles.clear();
        m_places.clear();
    }

    std::vector<Role> m_roles;
    Role m_next = Role::Other;
    bool m_topIsObject = false;
    bool m_profileIsObject = false;
    bool m_cacheIsObject = false;
    std::vector<ChromeProfile> m_profiles;
    std::unordered_map<std::string, std::size_t> m_places;
    std::size_t m_entry = 0;
};

} // namespace

std::vector<ChromeProfile> chromeProfilesFromLocalState(std::string_view contents) {
    ProfileRegistryReader reader;
    if (!forEachJsonEvent(contents, reader)) {
        return {};
    }
    std::vector<ChromeProfile> profiles = std::move(reader).profiles();
    // A key that is not one plain folder name ("..", "", "a/b", one holding a NUL byte) names no profile folder:
    // the profile is left out, and nothing is ever built from it.
    std::erase_if(profiles, [](const ChromeProfile& profile) { return !isSingleComponent(profile.folder); });
    return profiles;
}

} // namespace tidewell
