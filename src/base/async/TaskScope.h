#pragma once

#include "base/async/Completion.h"
#include "base/async/Task.h"

#include <memory>
#include <unordered_set>
#include <utility>

namespace dorix {

/// A task that a scope started. Copies name the same task; letting go of the handle lets the task run on.
template <typename T>
class TaskHandle {
 public:
    /// Asks the task to stop: the wait that it is in throws Cancelled. Any thread.
    void cancel() const { root_->requestStop(); }

    /// Any thread.
    bool isDone() const { return result_.isDone(); }

    /// The task's result, to any number of awaiters; its exception likewise. Cancelling the awaiter does not
    /// cancel the task.
    auto operator co_await() const& { return result_.operator co_await(); }
    /// The same for the one who awaits a handle that nobody else has: the result is moved out.
    auto operator co_await() && { return std::move(result_).operator co_await(); }

    /// The same waits, but a stop request to the awaiter does not cut them short.
    auto throughStop() const& { return result_.throughStop(); }
    auto throughStop() && { return std::move(result_).throughStop(); }

 private:
    friend class TaskScope;
    TaskHandle(std::shared_ptr<TaskRoot> root, Completion<T> result)
        : root_(std::move(root)), result_(std::move(result)) {}

    std::shared_ptr<TaskRoot> root_;
    Completion<T> result_;
};

/// Owns the tasks that its owner starts. Destroying it stops those still under way and destroys them where
/// they stand suspended: nothing of them runs afterwards, so they may use their owner freely. Declare it as
/// the owner's last member. Executor's thread only.
class TaskScope {
 public:
    explicit TaskScope(Executor& executor) : executor_(executor) {}
    TaskScope(const TaskScope&) = delete;
    TaskScope& operator=(const TaskScope&) = delete;
    ~TaskScope() {
        for (const auto& root : std::exchange(*roots_, {})) root->destroy();
    }

    Executor& executor() const { return executor_; }

    /// Starts `task` now: it runs inside this call up to its first wait.
    template <typename T>
    TaskHandle<T> spawn(Task<T> task) {
        auto root = std::make_shared<TaskRoot>(executor_);
        roots_->insert(root);
        Completion<T> result;
        auto frame = run(std::move(task), result, root, roots_).frame;
        frame.promise().root_ = root;
        root->adopt(frame);
        root->resume(frame);
        return TaskHandle<T>(root, result);
    }

 private:
    using Roots = std::unordered_set<std::shared_ptr<TaskRoot>>;

    struct Outermost {
        struct promise_type {
            std::shared_ptr<TaskRoot> root_;
            const std::shared_ptr<TaskRoot>& root() const { return root_; }
            Outermost get_return_object() {
                return {std::coroutine_handle<promise_type>::from_promise(*this)};
            }
            std::suspend_always initial_suspend() const noexcept { return {}; }
            std::suspend_never final_suspend() const noexcept { return {}; }
            void return_void() const noexcept {}
            void unhandled_exception() const noexcept { std::terminate(); }
        };
        std::coroutine_handle<promise_type> frame;
    };

    /// Settles the result when the frame goes without having done so: destroyed, others may still wait.
    template <typename T>
    struct SettleAtLast {
        Completion<T> result;
        ~SettleAtLast() { result.fail(std::make_exception_ptr(Cancelled())); }
    };

    template <typename T>
    static Outermost run(Task<T> task, Completion<T> result, std::shared_ptr<TaskRoot> root,
                         std::shared_ptr<Roots> roots) {
        SettleAtLast<T> settle{result};
        try {
            if constexpr (std::is_void_v<T>) {
                co_await std::move(task);
                result.complete();
            } else {
                result.complete(co_await std::move(task));
            }
        } catch (...) {
            result.fail(std::current_exception());
        }
        root->frameEnded();
        roots->erase(root);
    }

    Executor& executor_;
    // Shared with the frames: a running task may destroy its own scope.
    std::shared_ptr<Roots> roots_ = std::make_shared<Roots>();
};

}  // namespace dorix
