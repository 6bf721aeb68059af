#include "base/Observable.h"
#include "base/async/AsyncStream.h"
#include "base/async/SerialExecutor.h"
#include "base/async/Timer.h"
#include "unit/base/AsyncFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <memory>
#include <stdexcept>

namespace dorix {
namespace {

using testing::ElementsAre;

TEST_F(AsyncTest, WorkElsewhereComesBackToTheTasksOwnThread) {
    SerialExecutor worker;
    TaskScope scope(executor);
    const auto task = scope.spawn([](Executor& worker) -> Task<int> {
        const auto home = std::this_thread::get_id();
        const auto there = co_await runOn(worker, [] { return std::this_thread::get_id(); });
        co_return there != home&& home == std::this_thread::get_id() ? 1 : 0;
    }(worker));
    finish(task);
    EXPECT_EQ(outcome(task), "1");

    const auto failed = scope.spawn([](Executor& worker) -> Task<void> {
        co_await runOn(worker, [] { throw std::runtime_error("worker"); });
    }(worker));
    finish(failed);
    EXPECT_EQ(outcome(failed), "worker");
}

TEST_F(AsyncTest, WorkElsewhereMayOutliveTheTaskThatWaits) {
    std::promise<void> release;
    auto released = release.get_future().share();
    SerialExecutor worker;
    {
        TaskScope scope(executor);
        scope.spawn([](Executor& worker, std::shared_future<void> gate) -> Task<void> {
            co_await runOn(worker, [gate] { gate.wait(); });
        }(worker, released));
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

TEST(SerialExecutorTest, RunsInOrderOnItsOwnThreadAndRunsOutAtTheEnd) {
    std::vector<int> order;
    std::promise<bool> timerOnThread;
    {
        SerialExecutor serial;
        EXPECT_FALSE(serial.isCurrent());
        serial.post([&] {
            const auto dropped = serial.after(0, [&] { order.push_back(-1); });
            serial.cancel(dropped);
            serial.after(0.001, [&] { timerOnThread.set_value(serial.isCurrent()); });
            serial.after(1000, [&] { order.push_back(-2); });
        });
        EXPECT_TRUE(timerOnThread.get_future().get());
        for (int i = 0; i < 100; ++i) serial.post([&order, i] { order.push_back(i); });
    }
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(SerialExecutorTest, WorkWithoutEndLeavesTimersTheirTurnAndMayBeDroppedAtTheEnd) {
    std::promise<void> timerRan;
    SerialExecutor serial(SerialExecutor::AtEnd::drop);
    std::function<void()> again = [&] { serial.post(again); };
    serial.post([&] {
        serial.after(0.001, [&] { timerRan.set_value(); });
        again();
    });
    timerRan.get_future().wait();
    serial.stop();
    serial.post([] { FAIL() << "it has stopped"; });
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
