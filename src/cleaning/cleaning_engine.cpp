#include "cleaning/cleaning_engine.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/byte_count.hpp"
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
                if (const UrlList* locations = item.locations()) {
                    plan.kept.insert(plan.kept.end(), locations->begin(), locations->end());
                }
                continue;
            }
            if (const UrlList* locations = item.locations()) {
                plan.steps.push_back({*locations, nullptr, {}, item.name()});
            } else if (item.kind() == RecordKind::HistoryItem && item.browser() != nullptr &&
                       item.browser()->history != nullptr) {
                // One purge for each profile's database.
                for (FileUrl& database : item.historyDatabases()) {
                    plan.steps.push_back({{}, item.browser()->history, std::move(database), item.name()});
                }
            }
        }
    }
    return plan;
}

CleanPreview previewClean(const CleanPlan& plan, const DeletionBoundary& boundary, const AdultWords& words) {
    const PlaceSet kept(boundary, plan.kept);
    PlaceSet gone; // what earlier steps would have removed: a later step finds it gone, as the clean would
    CleanPreview preview;
    for (const CleanStep& step : plan.steps) {
        if (step.history != nullptr) {
            if (countedAsGone(boundary, step.database.path, kept, gone)) {
                continue; // a ticked location before it takes the database away: there is nothing to purge
            }
            const PurgePreview purge = previewPurge(*step.history, step.database, PurgeContext{words, boundary});
            if (purge.left) {
                preview.left.push_back(*purge.left);
            } else {
                preview.databases.push_back({step.database.path, purge.matchingRows, step.item});
            }
            continue;
        }
        for (const FileUrl& location : step.locations) {
            CleanOutcome outcome;
            const Removal removal = previewRemoval(boundary, location, kept, gone);
            noteRemoval(outcome, location, removal);
            if (removal.removed || removal.someWent) {
                gone.add(boundary, location.path);
            }
            for (const std::string& companion : removal.companions) {
                gone.add(boundary, companion);
            }
            for (RemovedLocation& removed : outcome.removed) {
                preview.locations.push_back({std::move(removed.location), removed.bytes, step.item, removed.whole});
            }
            std::ranges::move(outcome.left, std::back_inserter(preview.left));
        }
    }
    return preview;
}

std::vector<std::string> previewLines(const CleanPreview& preview) {
    std::vector<std::string> lines;
    std::uint64_t bytes = 0;
    for (const PreviewedLocation& location : preview.locations) {
        lines.push_back(fmt::format("{} {} ({}) [{}]", location.whole ? "Would remove" : "Would empty",
                                    location.location, sizeTextFor(static_cast<std::int64_t>(location.bytes)).text,
                                    location.item));
        bytes += location.bytes;
    }
    std::int64_t rows = 0;
    for (const PreviewedDatabase& database : preview.databases) {
        lines.push_back(fmt::format("Would purge {}: {} matching rows [{}]", database.database, database.matchingRows,
                                    database.item));
        rows += database.matchingRows;
    }
    for (const LeftAsItWas& left : preview.left) {
        lines.push_back(left.detail.empty() ? fmt::format("Would leave {}: {}", left.location, reasonName(left.reason))
                                            : fmt::format("Would leave {}: {} ({})", left.location,
                                                          reasonName(left.reason), left.detail));
    }
    lines.push_back(fmt::format("Would free {} in {} locations; {} matching rows in {} history databases; nothing "
                                "was changed",
                                sizeTextFor(static_cast<std::int64_t>(bytes)).text, preview.locations.size(), rows,
                                preview.databases.size()));
    return lines;
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
    const PlaceSet kept(m_boundary, plan.kept);
    std::size_t total = 0;
    for (const CleanStep& step : plan.steps) {
        total += step.history != nullptr ? 1 : step.locations.size();
    }
    std::size_t done = 0;
    const auto advance = [&] {
        if (progress) {
            progress(++done, total);
        }
    };
    for (const CleanStep& step : plan.steps) {
        if (step.history != nullptr) {
            purge(*step.history, step.database);
            advance();
            continue;
        }
        CleanOutcome outcome;
        for (const FileUrl& location : step.locations) {
            removeInto(outcome, m_boundary, location, kept);
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
