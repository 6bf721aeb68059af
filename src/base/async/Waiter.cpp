#include "base/async/Waiter.h"

#include <utility>

namespace dorix {

void TaskRoot::resume(std::coroutine_handle<> handle) {
    running_ = true;
    handle.resume();
    running_ = false;
    if (doomed_) destroyFrame();
}

void TaskRoot::destroy() {
    requestStop();
    if (running_) {
        doomed_ = true;
    } else {
        destroyFrame();
    }
}

void TaskRoot::destroyFrame() {
    if (auto frame = std::exchange(frame_, nullptr)) frame.destroy();
}

void Waiter::wake(Outcome outcome) {
    Outcome expected = Outcome::waiting;
    if (!outcome_.compare_exchange_strong(expected, outcome)) return;
    root_->executor().post([self = shared_from_this()] {
        if (self->outcome() != Outcome::abandoned) self->root_->resume(self->handle_);
    });
}

std::shared_ptr<Waiter> Wait::suspend(const std::shared_ptr<TaskRoot>& root, std::coroutine_handle<> handle) {
    waiter_ = std::make_shared<Waiter>(root, handle);
    stopToken_ = root->stopToken();
    return waiter_;
}

void Wait::armStop() {
    if (stoppable_ == Stoppable::no) return;
    stopCallback_ = std::make_unique<std::stop_callback<WakeCancelled>>(stopToken_, WakeCancelled{waiter_});
}

void Wait::throwIfCancelled() const {
    if (waiter_ && waiter_->outcome() == Waiter::Outcome::cancelled) throw Cancelled();
}

Wait::~Wait() {
    stopCallback_.reset();
    if (waiter_) waiter_->abandon();
}

}  // namespace dorix
