#include "base/Observable.h"
#include "base/async/AsyncStream.h"
#include "base/async/ManualExecutor.h"
#include "base/async/Run.h"
#include "base/async/SerialExecutor.h"
#include "base/async/Sleep.h"
#include "base/async/TaskScope.h"
#include "base/async/ThreadPool.h"
#include "base/async/Timer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;

using Trace = std::vector<std::string>;

class AsyncTest : public testing::Test {
 protected:
    /// Runs the executor until the task, which waits for another thread, is done.
    template <typename T>
    void finish(const TaskHandle<T>& task) {
        while (!task.isDone()) {
            executor.runPosted();
            std::this_thread::yield();
        }
    }

    /// What awaiting the handle gives: a text for the result, or for what was thrown.
    template <typename T>
    std::string outcome(const TaskHandle<T>& task) {
        std::string text = "pending";
        auto read = [](TaskHandle<T> handle, std::string& out) -> Task<void> {
            try {
                if constexpr (std::is_void_v<T>) {
                    co_await handle;
                    out = "done";
                } else {
                    out = std::to_string(co_await handle);
                }
            } catch (const Cancelled&) {
                out = "cancelled";
            } catch (const std::exception& error) {
                out = error.what();
            }
        };
        TaskScope reader(executor);
        reader.spawn(read(task, text));
        executor.runPosted();
        return text;
    }

    ManualExecutor executor;
    Trace trace;
};

Task<int> delayed(double seconds, int value) {
    co_await sleep(seconds);
    co_return value;
}

Task<int> sum() {
    const int first = co_await delayed(0.3, 1);
    co_return first + co_await delayed(0.2, 2);
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

TEST_F(AsyncTest, TasksRunInVirtualTimeAndPassResultsUp) {
    TaskScope scope(executor);
    const auto task = scope.spawn(sum());
    executor.advanceTo(0.49);
    EXPECT_FALSE(task.isDone());
    executor.advanceTo(0.5);
    EXPECT_EQ(outcome(task), "3");
    EXPECT_EQ(outcome(task), "3") << "a result may be awaited again";
}

TEST_F(AsyncTest, SpawnRunsUpToTheFirstWaitAndPostedWorkKeepsItsOrder) {
    TaskScope scope(executor);
    const auto step = [](Trace& out, std::string name) -> Task<void> {
        out.push_back(name + "1");
        co_await sleep(0);
        out.push_back(name + "2");
    };
    executor.post([&] { trace.emplace_back("posted"); });
    scope.spawn(step(trace, "a"));
    scope.spawn(step(trace, "b"));
    executor.advanceTo(0);
    EXPECT_THAT(trace, ElementsAre("a1", "b1", "posted", "a2", "b2"));
}

TEST_F(AsyncTest, ExceptionsReachEveryWaiter) {
    TaskScope scope(executor);
    const auto task = scope.spawn(failing());
    const auto parent = scope.spawn([](TaskHandle<void> inner) -> Task<int> {
        co_await inner;
        co_return 1;
    }(task));
    executor.advanceTo(1);
    EXPECT_EQ(outcome(task), "broken");
    EXPECT_EQ(outcome(parent), "broken");
}

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

TEST_F(AsyncTest, SleepThroughIsNotCutShort) {
    TaskScope scope(executor);
    const auto task = scope.spawn([]() -> Task<int> {
        co_await sleepThrough(0.45);
        co_return 1;
    }());
    task.cancel();
    executor.advanceTo(0.44);
    EXPECT_FALSE(task.isDone());
    executor.advanceTo(0.45);
    EXPECT_EQ(outcome(task), "1");
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

TEST_F(AsyncTest, WorkElsewhereComesBackToTheTasksOwnThread) {
    ThreadPool pool;
    TaskScope scope(executor);
    const auto task = scope.spawn([](ThreadPool& workers) -> Task<int> {
        const auto home = std::this_thread::get_id();
        const auto there = co_await runOn(workers, [] { return std::this_thread::get_id(); });
        co_return there != home&& home == std::this_thread::get_id() ? 1 : 0;
    }(pool));
    finish(task);
    EXPECT_EQ(outcome(task), "1");

    const auto failed = scope.spawn([](ThreadPool& workers) -> Task<void> {
        co_await runOn(workers, [] { throw std::runtime_error("worker"); });
    }(pool));
    finish(failed);
    EXPECT_EQ(outcome(failed), "worker");
}

TEST_F(AsyncTest, WorkElsewhereMayOutliveTheTaskThatWaits) {
    std::promise<void> release;
    auto released = release.get_future().share();
    ThreadPool pool;
    {
        TaskScope scope(executor);
        scope.spawn([](ThreadPool& workers, std::shared_future<void> gate) -> Task<void> {
            co_await runOn(workers, [gate] { gate.wait(); });
        }(pool, released));
    }
    release.set_value();
}

TEST_F(AsyncTest, ManyThreadsCompleteAndCancelAtOnce) {
    constexpr int rounds = 300;
    TaskScope scope(executor);
    int done = 0;
    int cancelled = 0;
    for (int i = 0; i < rounds; ++i) {
        Completion<int> result;
        const auto task = scope.spawn([](Completion<int> wait, int& ended, int& stopped) -> Task<void> {
            try {
                co_await wait;
                ++ended;
            } catch (const Cancelled&) {
                ++stopped;
            }
        }(result, done, cancelled));
        std::thread completer([result] { result.complete(1); });
        std::thread canceller([task] { task.cancel(); });
        finish(task);
        completer.join();
        canceller.join();
    }
    EXPECT_EQ(done + cancelled, rounds);
}

TEST_F(AsyncTest, StreamsKeepOrderAcrossThreadsAndEndWithTheirError) {
    AsyncStream<int> stream;
    TaskScope scope(executor);
    const auto task = scope.spawn([](AsyncStream<int> input) -> Task<int> {
        int expected = 0;
        while (const auto value = co_await input.next()) {
            if (*value != expected) co_return -1;
            ++expected;
        }
        co_return expected;
    }(stream));
    std::thread pusher([stream] {
        for (int i = 0; i < 1000; ++i) stream.push(i);
        stream.finish();
        stream.push(1000);
    });
    finish(task);
    pusher.join();
    EXPECT_EQ(outcome(task), "1000");

    AsyncStream<int> broken;
    broken.push(1);
    broken.finish(std::make_exception_ptr(std::runtime_error("broken stream")));
    const auto reader = scope.spawn([](AsyncStream<int> input) -> Task<int> {
        co_await input.next();
        co_return *co_await input.next();
    }(broken));
    EXPECT_EQ(outcome(reader), "broken stream");
}

TEST_F(AsyncTest, TimersKeepTheirBeatAndStopFromInside) {
    Timer timer(executor);
    std::vector<double> beats;
    timer.repeat(0.25, [&] {
        beats.push_back(executor.now());
        if (beats.size() == 4) timer.stop();
    });
    executor.advanceTo(10);
    EXPECT_THAT(beats, ElementsAre(0.25, 0.5, 0.75, 1.0));
    EXPECT_FALSE(timer.isActive());

    auto owned = std::make_unique<Timer>(executor);
    owned->repeat(1, [&] { owned.reset(); });
    executor.advanceTo(20);
    EXPECT_EQ(owned, nullptr);

    timer.once(1, [&] { timer.once(1, [&] { beats.push_back(executor.now()); }); });
    executor.advanceTo(30);
    EXPECT_EQ(beats.back(), 22);
    EXPECT_FALSE(executor.hasTimers());
}

TEST(SerialExecutorTest, RunsInOrderOnItsOwnThreadAndDrainsAtTheEnd) {
    std::vector<int> order;
    std::promise<bool> timerOnThread;
    {
        SerialExecutor serial;
        EXPECT_FALSE(serial.isCurrent());
        const auto dropped = serial.after(0, [&] { order.push_back(-1); });
        serial.cancel(dropped);
        serial.after(0.001, [&] { timerOnThread.set_value(serial.isCurrent()); });
        EXPECT_TRUE(timerOnThread.get_future().get());
        serial.after(1000, [&] { order.push_back(-2); });
        for (int i = 0; i < 100; ++i) serial.post([&order, i] { order.push_back(i); });
    }
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(ObservableTest, TellsChangesOnlyAndToleratesObserversThatComeAndGo) {
    Observable<int> value(1);
    std::vector<int> seen;
    auto subscription = value.subscribe([&](int now) { seen.push_back(now); });
    value.set(1);
    value.set(2);
    Subscription late;
    auto meddler = value.subscribe([&](int now) {
        if (now == 3) value.set(4);
        late = value.subscribe([&](int then) { seen.push_back(then * 10); });
    });
    value.set(3);
    EXPECT_THAT(seen, ElementsAre(2, 3, 4));
    subscription.reset();
    meddler.reset();
    value.set(5);
    EXPECT_THAT(seen, ElementsAre(2, 3, 4, 50));
}

}  // namespace
}  // namespace dorix
