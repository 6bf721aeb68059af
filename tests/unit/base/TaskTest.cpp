#include "base/async/Completion.h"
#include "base/async/Sleep.h"
#include "base/async/Timeout.h"
#include "unit/base/AsyncFixture.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace dorix {
namespace {

using testing::ElementsAre;

using Trace = std::vector<std::string>;

Task<int> delayed(double seconds, int value) {
    co_await sleep(seconds);
    co_return value;
}

Task<void> failing() {
    co_await sleep(0.1);
    throw std::runtime_error("broken");
}

/// Notes that the frame it lives in is gone.
struct Mark {
    Trace* trace = nullptr;
    std::string text;
    Mark(Trace& out, std::string what) : trace(&out), text(std::move(what)) {}
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;
    ~Mark() { trace->push_back(text); }
};

TEST_F(AsyncTest, SeveralWaitersGoOnWhenATaskEnds) {
    TaskScope scope(executor);
    const auto task = scope.spawn(delayed(1, 7));
    const auto wait = [](TaskHandle<int> handle, Trace& out) -> Task<void> {
        out.push_back(std::to_string(co_await handle));
    };
    scope.spawn(wait(task, trace));
    const auto leaver = scope.spawn(wait(task, trace));
    scope.spawn(wait(task, trace));
    leaver.cancel();
    executor.advanceTo(0.5);
    EXPECT_EQ(outcome(leaver), "cancelled");
    EXPECT_FALSE(task.isDone()) << "a waiter that goes does not take the task with it";
    executor.advanceTo(1);
    EXPECT_THAT(trace, ElementsAre("7", "7"));
    EXPECT_EQ(outcome(task), "7") << "a result may be awaited again";
}

TEST_F(AsyncTest, CancellingASuspendedTaskUnwindsIt) {
    TaskScope scope(executor);
    const auto task = scope.spawn([](Trace& out) -> Task<int> {
        const Mark outer(out, "outer");
        co_return co_await [](Trace& inner) -> Task<int> {
            const Mark mark(inner, "inner");
            co_await sleep(10);
            co_return 1;
        }(out);
    }(trace));
    task.cancel();
    EXPECT_TRUE(trace.empty()) << "it unwinds on its executor, not inside cancel";
    executor.runPosted();
    EXPECT_THAT(trace, ElementsAre("inner", "outer"));
    EXPECT_EQ(outcome(task), "cancelled");
    EXPECT_FALSE(executor.hasTimers()) << "the sleep's timer went with it";
}

TEST_F(AsyncTest, CancellingWhileRunningEndsTheNextWait) {
    TaskScope scope(executor);
    std::optional<TaskHandle<void>> self;
    const auto body = [](std::optional<TaskHandle<void>>& handle, Trace& out) -> Task<void> {
        co_await sleep(1);
        handle->cancel();
        out.emplace_back("still running");
        co_await sleep(1);
        out.emplace_back("never");
    };
    self = scope.spawn(body(self, trace));
    executor.advanceTo(5);
    EXPECT_THAT(trace, ElementsAre("still running"));
    EXPECT_EQ(outcome(*self), "cancelled");
}

TEST_F(AsyncTest, WhoComesFirstDecidesBetweenCompletionAndCancellation) {
    TaskScope scope(executor);
    const auto body = [](Completion<int> result) -> Task<int> { co_return co_await result; };

    Completion<int> early;
    const auto completed = scope.spawn(body(early));
    early.complete(4);
    completed.cancel();
    executor.runPosted();
    EXPECT_EQ(outcome(completed), "4");

    Completion<int> late;
    const auto cancelled = scope.spawn(body(late));
    cancelled.cancel();
    late.complete(4);
    executor.runPosted();
    EXPECT_EQ(outcome(cancelled), "cancelled");
    EXPECT_FALSE(late.complete(5)) << "the first result stands";
}

TEST_F(AsyncTest, AnOnlyWaiterGetsTheResultItselfNotACopy) {
    using Text = std::unique_ptr<std::string>;
    TaskScope scope(executor);
    const auto wait = [](Completion<Text> result, Trace& out) -> Task<Text> {
        auto text = co_await std::move(result);
        out.push_back(*text);
        co_return text;
    };
    const auto pass = [](TaskHandle<Text> handle, Trace& out) -> Task<void> {
        out.push_back(*co_await std::move(handle).throughStop());
    };
    Completion<Text> result;
    scope.spawn(pass(scope.spawn(wait(result, trace)), trace));
    result.complete(std::make_unique<std::string>("moved"));
    executor.runPosted();
    EXPECT_THAT(trace, ElementsAre("moved", "moved"));
}

TEST_F(AsyncTest, ATimeoutGivesUpOnWhatIsLate) {
    const auto report = [](Task<int> task, Trace& out) -> Task<void> {
        const auto result = co_await withTimeout(std::move(task), 1);
        out.push_back(result ? std::to_string(*result) : "late");
    };
    const auto marked = [](double seconds, Trace& out) -> Task<int> {
        const Mark mark(out, "frame gone");
        co_return co_await delayed(seconds, 7);
    };
    TaskScope scope(executor);
    scope.spawn(report(marked(0.5, trace), trace));
    scope.spawn(report(marked(1.5, trace), trace));
    executor.advanceTo(1);
    EXPECT_THAT(trace, ElementsAre("frame gone", "7", "frame gone", "late"));
    EXPECT_FALSE(executor.hasTimers());

    const auto broken = scope.spawn(withTimeout(failing(), 1));
    const auto stopped = scope.spawn(withTimeout(marked(0.5, trace), 1));
    stopped.cancel();
    executor.advanceTo(2);
    EXPECT_EQ(outcome(broken), "broken");
    EXPECT_EQ(trace.back(), "frame gone");
    EXPECT_FALSE(executor.hasTimers());
}

TEST_F(AsyncTest, AScopeDestroysItsTasksWhereTheyStand) {
    std::optional<TaskHandle<void>> survivor;
    Completion<void> never;
    {
        TaskScope scope(executor);
        survivor = scope.spawn([](Trace& out, Completion<void> wait) -> Task<void> {
            const Mark mark(out, "frame gone");
            co_await wait;
            out.emplace_back("never");
        }(trace, never));
        never.complete();  // its resume is queued when the frame goes
    }
    EXPECT_THAT(trace, ElementsAre("frame gone"));
    executor.runPosted();
    EXPECT_THAT(trace, ElementsAre("frame gone"));
    EXPECT_EQ(outcome(*survivor), "cancelled") << "others who wait for it are told";
}

TEST_F(AsyncTest, ATaskMayDestroyItsOwner) {
    struct Owner {
        explicit Owner(Executor& executor) : scope(executor) {}
        TaskScope scope;
    };
    auto owner = std::make_unique<Owner>(executor);
    owner->scope.spawn([](std::unique_ptr<Owner>& own, Trace& out) -> Task<void> {
        const Mark mark(out, "frame gone");
        co_await sleep(1);
        own.reset();
        out.emplace_back("owner gone");
        co_await sleep(1);
        out.emplace_back("never");
    }(owner, trace));
    executor.advanceTo(5);
    EXPECT_THAT(trace, ElementsAre("owner gone", "frame gone"));
}

}  // namespace
}  // namespace dorix
