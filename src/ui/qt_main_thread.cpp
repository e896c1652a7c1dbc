#include "ui/qt_main_thread.hpp"

#include <QCoreApplication>
#include <QThread>

namespace tidewell {

QtMainThread::QtMainThread(QObject& context) : m_context(context) {}

bool QtMainThread::onMainThread() const {
    const QCoreApplication* application = QCoreApplication::instance();
    return application != nullptr && QThread::currentThread() == application->thread();
}

void QtMainThread::post(std::function<void()> task) {
    // Queued even from the main thread itself, so a task never runs inside the call that posted it.
    QMetaObject::invokeMethod(&m_context, std::move(task), Qt::QueuedConnection);
}

} // namespace tidewell
