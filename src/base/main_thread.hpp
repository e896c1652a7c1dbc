#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

#include "base/task_queue.hpp"

namespace tidewell {

/// The hand-over to the main thread: a scan thread asks the main thread to run something and waits for it, so the
/// main thread only ever looks at the catalogue while the scan thread is blocked. The window and the command-line
/// tool each provide the posting; the waiting is the same for both.
class MainThreadExecutor {
public:
    virtual ~MainThreadExecutor() = default;

    /// Runs fn on the main thread and waits until it has run; on the main thread itself, runs it at once.
    /// Returns false without running fn when stop is requested (or the executor shut down) before fn started.
    bool runAndWait(std::function<void()> fn, const std::stop_token& stop = {});

    /// Ends every wait that has not started running; later hand-overs return false at once.
    void shutdown();

    /// Whether the calling thread is the main thread.
    [[nodiscard]] virtual bool onMainThread() const = 0;

protected:
    /// Queues task to run on the main thread.
    virtual void post(std::function<void()> task) = 0;

private:
    enum class HandOver { Waiting, Running, Done, Abandoned };

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_shutdown = false;
};

/// The command-line tool's main thread: a plain queue that the thread which made it drains in run().
class EventQueue final : public MainThreadExecutor {
public:
    EventQueue();

    /// Runs queued tasks on the calling thread until quit() (which may itself be a queued task).
    void run();
    void quit();
    [[nodiscard]] bool onMainThread() const override { return std::this_thread::get_id() == m_mainThread; }
    void post(std::function<void()> task) override;

private:
    std::thread::id m_mainThread;
    std::mutex m_mutex;
    std::condition_variable m_ready;
    TaskQueue m_tasks;
    bool m_quit = false;
};

} // namespace tidewell
