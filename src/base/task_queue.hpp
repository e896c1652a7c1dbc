#pragma once

#include <deque>
#include <functional>
#include <mutex>

namespace tidewell {

/// Tasks waiting for a thread, guarded by their owner's mutex.
using TaskQueue = std::deque<std::function<void()>>;

/// Takes the first task off a queue that is not empty and runs it with the queue's lock (held on entry) released,
/// so that a task may queue more; the lock is held again on return.
inline void runFirstTask(TaskQueue& tasks, std::unique_lock<std::mutex>& lock) {
    std::function<void()> task = std::move(tasks.front());
    tasks.pop_front();
    lock.unlock();
    task();
    lock.lock();
}

} // namespace tidewell
