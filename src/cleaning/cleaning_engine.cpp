#include "cleaning/cleaning_engine.hpp"

#include <utility>

#include "base/log.hpp"
#include "catalogue/record_views.hpp"

namespace tidewell {

DeletionBoundary boundaryOfGrant(const FolderGrant& grant, const DiskRoot& disk) {
    return DeletionBoundary(grant.path, FolderIdentity{grant.device, grant.inode}, disk.homePath());
}

CleanPlan planClean(const RecordList& sections) {
    CleanPlan plan;
    for (const Section& section : sectionsOf(sections)) {
        for (const Item& item : section.items()) {
            if (!item.isTicked()) {
                continue;
            }
            if (const UrlList* locations = item.locations()) {
                plan.push_back({*locations});
            } else if (item.kind() == RecordKind::HistoryItem && item.browser() != nullptr &&
                       item.browser()->history != nullptr) {
                // One purge for each profile's database.
                for (FileUrl& database : item.historyDatabases()) {
                    plan.push_back({{}, item.browser()->history, std::move(database)});
                }
            }
        }
    }
    return plan;
}

CleaningEngine::CleaningEngine(CleanMode mode, DeletionBoundary boundary, AdultWords words)
    : m_mode(mode), m_boundary(std::move(boundary)), m_words(std::move(words)) {}

CleaningEngine::~CleaningEngine() {
    static_cast<void>(joinAll());
}

void CleaningEngine::setAdultWords(AdultWords words) {
    const std::lock_guard lock(m_mutex);
    m_words = std::move(words);
}

AdultWords CleaningEngine::adultWords() const {
    const std::lock_guard lock(m_mutex);
    return m_words;
}

void CleaningEngine::clean(const CleanPlan& plan, const CleanProgress& progress) {
    if (m_mode == CleanMode::RealTime) {
        logLine("Remove Start");
        reapFinishedTasks();
    }
    std::size_t total = 0;
    for (const CleanStep& step : plan) {
        total += step.history != nullptr ? 1 : step.locations.size();
    }
    std::size_t done = 0;
    const auto advance = [&] {
        if (progress) {
            progress(++done, total);
        }
    };
    for (const CleanStep& step : plan) {
        if (step.history != nullptr) {
            purge(*step.history, step.database);
            advance();
            continue;
        }
        CleanOutcome outcome;
        for (const FileUrl& location : step.locations) {
            removeInto(outcome, m_boundary, location);
            advance();
        }
        record(std::move(outcome));
    }
}

void CleaningEngine::purge(const HistorySchema& schema, const FileUrl& database) {
    const AdultWords words = adultWords();
    if (m_mode == CleanMode::Interactive) {
        record(purgeHistory(schema, database, PurgeContext{words, m_boundary, m_mode}));
        return;
    }
    auto done = std::make_shared<std::atomic<bool>>(false);
    std::jthread thread([this, words, &schema, database, done] {
        record(purgeHistory(schema, database, PurgeContext{words, m_boundary, m_mode}));
        done->store(true);
    });
    const std::lock_guard lock(m_mutex);
    m_tasks.push_back(Task{std::move(thread), std::move(done)});
}

void CleaningEngine::reapFinishedTasks() {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_tasks, [](const Task& task) { return task.done->load(); });
}

void CleaningEngine::record(CleanOutcome outcome) {
    const std::lock_guard lock(m_mutex);
    if (m_reporter) {
        for (const LeftAsItWas& left : outcome.left) {
            m_reporter(left);
        }
    }
    m_outcome.add(std::move(outcome));
}

CleanOutcome CleaningEngine::joinAll() {
    std::vector<Task> tasks;
    {
        const std::lock_guard lock(m_mutex);
        tasks.swap(m_tasks);
    }
    for (Task& task : tasks) {
        if (task.thread.joinable()) {
            task.thread.join();
        }
    }
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_outcome, {});
}

} // namespace tidewell
