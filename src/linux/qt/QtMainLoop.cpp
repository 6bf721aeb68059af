#include "linux/qt/QtMainLoop.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <algorithm>
#include <cmath>

namespace dorix {

namespace {
const auto postedWork = static_cast<QEvent::Type>(QEvent::registerEventType());
}

QtMainLoop::QtMainLoop() {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &QtMainLoop::runDueTimers);
}

QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Work work) {
    const std::scoped_lock lock(mutex_);
    posted_.push_back(std::move(work));
    wake();
}

/// Under the lock: has Qt call runPosted soon.
void QtMainLoop::wake() {
    if (!std::exchange(awake_, true)) QCoreApplication::postEvent(this, new QEvent(postedWork));
}

bool QtMainLoop::event(QEvent* event) {
    if (event->type() != postedWork) return QObject::event(event);
    runPosted();
    return true;
}

void QtMainLoop::runPosted() {
    std::unique_lock lock(mutex_);
    awake_ = false;
    // As many as are here now: what they queue waits for the next turn, so that Qt's events are not starved.
    for (auto count = posted_.size(); count > 0 && !posted_.empty(); --count) {
        auto work = std::move(posted_.front());
        posted_.pop_front();
        // Work that runs an event loop of its own, as a menu does, must not hold up the rest.
        if (!posted_.empty()) wake();
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
}

Executor::TimerId QtMainLoop::after(double seconds, Work work) {
    const auto id = timers_.add(now() + std::max(seconds, 0.0), std::move(work));
    armTimer();
    return id;
}

void QtMainLoop::cancel(TimerId id) {
    const auto dropped = timers_.remove(id);
    armTimer();
}

void QtMainLoop::runDueTimers() {
    const double time = now();
    while (auto work = timers_.takeDue(time)) {
        armTimer();  // for work that runs an event loop of its own
        work();
    }
    armTimer();
}

void QtMainLoop::armTimer() {
    const auto due = timers_.nextDue();
    if (!due) {
        timer_.stop();
        return;
    }
    const double wait = std::max(*due - now(), 0.0);
    timer_.start(static_cast<int>(std::min(std::ceil(wait * 1000), 86'400'000.0)));
}

namespace {
Subscription watch(int fd, QSocketNotifier::Type type, std::function<void()> ready) {
    // The token may be let go inside its own call, where the notifier must not be deleted.
    const auto release = [](QSocketNotifier* notifier) {
        notifier->setEnabled(false);
        notifier->deleteLater();
    };
    const std::shared_ptr<QSocketNotifier> notifier(new QSocketNotifier(fd, type), release);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, std::move(ready));
    return Subscription(notifier);
}
}  // namespace

Subscription QtMainLoop::watchReadable(int fd, std::function<void()> ready) {
    return watch(fd, QSocketNotifier::Read, std::move(ready));
}

Subscription QtMainLoop::watchWritable(int fd, std::function<void()> ready) {
    return watch(fd, QSocketNotifier::Write, std::move(ready));
}

}  // namespace dorix
