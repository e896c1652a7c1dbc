#include "cleaning/cleaning_engine.hpp"

#include <string_view>
#include <utility>

#include "base/log.hpp"

namespace tidewell {

namespace {

using PurgeRoutine = CleanOutcome (*)(const FileUrl&, const PurgeContext&);

PurgeRoutine routineFor(std::string_view nameText) {
    if (nameText == "Google Chrome Adult History") {
        return deleteChromeAdultHistory;
    }
    if (nameText == "Safari Adult History") {
        return deleteSafariAdultHistory;
    }
    if (nameText == "Firefox Adult History") {
        return deleteFireFoxAdultHistory;
    }
    return nullptr;
}

} // namespace

DeletionBoundary boundaryOfGrant(const FolderGrant& grant, const DiskRoot& disk) {
    return DeletionBoundary(grant.path, FolderIdentity{grant.device, grant.inode}, disk.homePath());
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

void CleaningEngine::cleanSelected(const RecordList& sections) {
    if (m_mode == CleanMode::RealTime) {
        logLine("Remove Start");
        reapFinishedTasks();
    }
    RecordList items;
    for (const RecordPtr& section : sections) {
        if (const RecordList* list = section->list("List")) {
            items.insert(items.end(), list->begin(), list->end());
        }
    }
    for (const RecordPtr& item : items) {
        if (!isTrue(*item, "isChecked")) {
            continue;
        }
        if (item->has("AllList")) {
            if (const UrlList* locations = item->urls("AllList")) {
                CleanOutcome outcome;
                for (const FileUrl& location : *locations) {
                    removeInto(outcome, m_boundary, location);
                }
                record(std::move(outcome));
            }
        } else if (item->has("Path")) {
            purge(item);
        }
    }
}

void CleaningEngine::purge(const RecordPtr& item) {
    const PurgeRoutine routine = routineFor(item->text("NameText"));
    if (routine == nullptr) {
        return;
    }
    const AdultWords words = adultWords();
    if (m_mode == CleanMode::Interactive) {
        if (const FileUrl* path = item->url("Path")) {
            record(routine(*path, PurgeContext{words, m_boundary, m_mode}));
        }
        return;
    }
    auto done = std::make_shared<std::atomic<bool>>(false);
    std::jthread thread([this, item, words, routine, done] {
        // The "Path" is read when the task runs, not when it is queued.
        if (const FileUrl* path = item->url("Path")) {
            record(routine(*path, PurgeContext{words, m_boundary, m_mode}));
        }
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
