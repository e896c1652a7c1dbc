#pragma once

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "platform/running_apps.hpp"

namespace tidewell::testing {

/// Running programs as a test says: each look finds the next set of process names running, and the last set stays.
class FakeRunningApps final : public RunningApplications {
public:
    FakeRunningApps(std::initializer_list<std::set<std::string>> looks) : m_looks(looks) {}

    [[nodiscard]] std::set<std::string> runningAmong(const std::set<std::string>& processNames) const override {
        const std::size_t look = m_count < m_looks.size() ? m_count : m_looks.size() - 1;
        ++m_count;
        std::set<std::string> running;
        std::ranges::set_intersection(m_looks.at(look), processNames, std::inserter(running, running.end()));
        return running;
    }
    /// How many times the running applications were read.
    [[nodiscard]] std::size_t looks() const { return m_count; }

private:
    std::vector<std::set<std::string>> m_looks;
    mutable std::size_t m_count = 0;
};

} // namespace tidewell::testing
