#pragma once

#include <QObject>
#include <functional>

#include "base/main_thread.hpp"

namespace tidewell {

/// The window's main thread for the scan's hand-overs: a task is queued to the thread of the application object and
/// runs there in the context of an object, so nothing runs once that object is gone.
///
/// The owner of the context must shut this executor down and end the scan before the context goes: a scan thread
/// waiting on a task that will never run would otherwise wait for ever.
class QtMainThread final : public MainThreadExecutor {
public:
    /// context: the object whose life bounds the queued tasks; it lives on the application's thread.
    explicit QtMainThread(QObject& context);

    /// Whether the calling thread is the application's (the thread the event loop runs on).
    [[nodiscard]] bool onMainThread() const override;

protected:
    void post(std::function<void()> task) override;

private:
    QObject& m_context;
};

} // namespace tidewell
