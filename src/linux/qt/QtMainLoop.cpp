#include "linux/qt/QtMainLoop.h"

#include "base/async/SystemClock.h"

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
    {
        std::scoped_lock lock(mutex_);
        posted_.push_back(std::move(work));
        if (std::exchange(awake_, true)) return;
    }
    QCoreApplication::postEvent(this, new QEvent(postedWork));
}

bool QtMainLoop::event(QEvent* event) {
    if (event->type() != postedWork) return QObject::event(event);
    runPosted();
    return true;
}

void QtMainLoop::runPosted() {
    std::deque<Work> batch;
    {
        std::scoped_lock lock(mutex_);
        batch.swap(posted_);
        awake_ = false;
    }
    // What this queues waits for the next turn, so that the loop's other events are not starved.
    for (auto& work : batch) {
        work();
        work = nullptr;
    }
}

Executor::TimerId QtMainLoop::after(double seconds, Work work) {
    const TimerId id{++lastId_};
    timers_.emplace(Due{now() + std::max(seconds, 0.0), id}, std::move(work));
    armTimer();
    return id;
}

void QtMainLoop::cancel(TimerId id) {
    const auto timer =
        std::ranges::find_if(timers_, [id](const auto& entry) { return entry.first.second == id; });
    if (timer == timers_.end()) return;
    auto dropped = timers_.extract(timer);
    armTimer();
}

double QtMainLoop::now() const { return steadySeconds(); }
double QtMainLoop::date() const { return wallSeconds(); }

void QtMainLoop::runDueTimers() {
    const double time = now();
    while (!timers_.empty() && timers_.begin()->first.first <= time) {
        auto timer = timers_.extract(timers_.begin());
        timer.mapped()();
    }
    armTimer();
}

void QtMainLoop::armTimer() {
    if (timers_.empty()) {
        timer_.stop();
        return;
    }
    const double wait = std::max(timers_.begin()->first.first - now(), 0.0);
    timer_.start(static_cast<int>(std::min(std::ceil(wait * 1000), 86'400'000.0)));
}

FdWatcher::Token QtMainLoop::watchReadable(int fd, std::function<void()> ready) {
    // The token may be let go inside its own call, where the notifier must not be deleted.
    const auto release = [](QSocketNotifier* notifier) {
        notifier->setEnabled(false);
        notifier->deleteLater();
    };
    const std::shared_ptr<QSocketNotifier> notifier(new QSocketNotifier(fd, QSocketNotifier::Read), release);
    connect(notifier.get(), &QSocketNotifier::activated, std::move(ready));
    return notifier;
}

}  // namespace dorix
