#include "base/main_thread.hpp"

#include <memory>

namespace tidewell {

bool MainThreadExecutor::runAndWait(std::function<void()> fn, const std::stop_token& stop) {
    if (onMainThread()) {
        fn();
        return true;
    }
    auto state = std::make_shared<HandOver>(HandOver::Waiting);
    {
        std::lock_guard lock(m_mutex);
        if (m_shutdown || stop.stop_requested()) {
            return false;
        }
    }
    post([this, state, fn = std::move(fn)] {
        {
            std::lock_guard lock(m_mutex);
            if (*state == HandOver::Abandoned) {
                return;
            }
            *state = HandOver::Running;
        }
        fn();
        {
            std::lock_guard lock(m_mutex);
            *state = HandOver::Done;
        }
        m_changed.notify_all();
    });
    const std::stop_callback wakeOnStop(stop, [this] {
        { std::lock_guard lock(m_mutex); }
        m_changed.notify_all();
    });
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] {
        return *state == HandOver::Done || (*state == HandOver::Waiting && (m_shutdown || stop.stop_requested()));
    });
    if (*state == HandOver::Done) {
        return true;
    }
    *state = HandOver::Abandoned;
    return false;
}

void MainThreadExecutor::shutdown() {
    {
        std::lock_guard lock(m_mutex);
        m_shutdown = true;
    }
    m_changed.notify_all();
}

EventQueue::EventQueue() : m_mainThread(std::this_thread::get_id()) {}

void EventQueue::post(std::function<void()> task) {
    {
        std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    m_ready.notify_one();
}

void EventQueue::run() {
    std::unique_lock lock(m_mutex);
    m_quit = false;
    while (true) {
        m_ready.wait(lock, [this] { return m_quit || !m_tasks.empty(); });
        if (m_tasks.empty()) {
            return;
        }
        runFirstTask(m_tasks, lock);
    }
}

void EventQueue::quit() {
    {
        std::lock_guard lock(m_mutex);
        m_quit = true;
    }
    m_ready.notify_one();
}

} // namespace tidewell
