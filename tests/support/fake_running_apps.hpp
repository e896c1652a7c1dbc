#pragma once

#include <initializer_list>
#include <set>
#include <string>
#include <vector>

#include "platform/running_apps.hpp"

namespace tidewell::testing {

/// Running applications as a test says: each look returns the next set of names, and the last set stays.
class FakeRunningApps final : public RunningApplications {
public:
    FakeRunningApps(std::initializer_list<std::set<std::string>> looks) : m_looks(looks) {}

    [[nodiscard]] std::set<std::string> launchedApplicationNames() const override {
        const std::size_t look = m_count < m_looks.size() ? m_count : m_looks.size() - 1;
        ++m_count;
        return m_looks.at(look);
    }
    /// How many times the running applications were read.
    [[nodiscard]] std::size_t looks() const { return m_count; }

private:
    std::vector<std::set<std::string>> m_looks;
    mutable std::size_t m_count = 0;
};

} // namespace tidewell::testing
