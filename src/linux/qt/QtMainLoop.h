#pragma once

#include "base/async/Executor.h"
#include "base/async/TimerQueue.h"
#include "linux/loop/FdWatcher.h"

#include <QObject>
#include <QTimer>
#include <deque>
#include <mutex>
#include <thread>

namespace dorix {

/// The main executor of the program: Qt's event loop. Made on the main thread, after the QCoreApplication.
class QtMainLoop final : public QObject, public Executor, public FdWatcher {
 public:
    QtMainLoop();
    ~QtMainLoop() override;

    void post(Work work) override;
    TimerId after(double seconds, Work work) override;
    void cancel(TimerId id) override;
    bool isCurrent() const override { return std::this_thread::get_id() == thread_; }

    Subscription watchReadable(int fd, std::function<void()> ready) override;
    Subscription watchWritable(int fd, std::function<void()> ready) override;

 protected:
    bool event(QEvent* event) override;

 private:
    void wake();
    void runPosted();
    void runDueTimers();
    void armTimer();

    const std::thread::id thread_ = std::this_thread::get_id();
    QTimer timer_;
    TimerQueue timers_;

    std::mutex mutex_;
    std::deque<Work> posted_;  // guarded by mutex_
    bool awake_ = false;       // guarded by mutex_: an event that will run posted_ is on its way
};

}  // namespace dorix
