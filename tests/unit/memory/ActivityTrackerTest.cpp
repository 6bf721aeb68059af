#include "base/async/ManualExecutor.h"
#include "fakes/FakeAccessibility.h"
#include "fakes/FakeDesktop.h"
#include "fakes/TemporaryFolder.h"
#include "memory/activity/ActivityTracker.h"
#include "memory/store/MemoryStore.h"
#include "platform/SessionState.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr double day = 86400;

class ActivityTrackerTest : public testing::Test {
 protected:
    /// Has the window in front be one of this application.
    void show(std::int32_t process, const std::string& app, const std::string& title,
              const std::string& url = "") {
        workspace.frontmost = RunningApplication{
            .processIdentifier = process, .bundleIdentifier = "org." + app, .localizedName = app};
        auto window = std::make_shared<FakeElement>();
        if (!title.empty()) window->attributes["AXTitle"] = title;
        if (!url.empty()) window->attributes["AXDocument"] = url;
        accessibility.application(process).attributes["AXFocusedWindow"] = AXValue(window);
    }

    std::vector<ActivityRow> rows() {
        std::optional<std::vector<ActivityRow>> result;
        TaskScope scope(executor);
        const auto read = [](MemoryStore& from, std::optional<std::vector<ActivityRow>>& into) -> Task<void> {
            into = co_await from.activitySince(0);
        };
        scope.spawn(read(store, result));
        for (int i = 0; i < 5000 && !result; ++i) {
            executor.runPosted();
            if (!result) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return result.value_or(std::vector<ActivityRow>());
    }
    std::vector<std::string> told() {
        std::vector<std::string> result;
        for (const auto& row : rows())
            result.push_back(row.app + "|" + row.title + "|" + row.document.value_or("-"));
        return result;
    }

    TemporaryFolder folder;
    ManualExecutor executor;
    FakeWorkspace workspace;
    FakeAccessibility accessibility;
    SessionState session;
    Observable<bool> paused{false};
    Observable<bool> trackActivity{true};
    MemoryStore store{executor, folder.path() / "memory.sqlite"};
    std::unique_ptr<ActivityTracker> tracker = std::make_unique<ActivityTracker>(
        ActivityTracker::Parts{executor, workspace, accessibility, session, paused, trackActivity, store});
};

TEST_F(ActivityTrackerTest, AnHourInOneWindowIsARowEveryFiveMinutesAndAChangeIsARowAtOnce) {
    show(7, "Notas", "Obra");
    tracker->startActivity();
    executor.advanceBy(3600);
    EXPECT_THAT(rows(), SizeIs(10)) << "at 60 s, then on the first tick past 300 s";

    executor.advanceBy(5);
    show(8, "Correo", "Bandeja");
    workspace.activations.notify();
    workspace.activations.notify();
    EXPECT_THAT(rows(), SizeIs(11));
    EXPECT_EQ(rows().back().time, executor.date());
    show(8, "Correo", "Redactar");
    executor.advanceBy(60);
    EXPECT_EQ(told().back(), "Correo|Redactar|-");

    tracker.reset();
    workspace.activations.notify();
    executor.advanceBy(600);
    EXPECT_THAT(rows(), SizeIs(12));
}

TEST_F(ActivityTrackerTest, KeepsNamesAlone) {
    show(7, "Textos", "Informe — Textos", "file:///home/ana/Informe%20a%C3%B1o.odt");
    tracker->sampleActivity();
    show(7, "Textos", "", "file:///home/ana/b.odt");
    tracker->sampleActivity();
    show(9, "Navegador", "Página", "https://velmar.example/informe.odt");
    tracker->sampleActivity();
    workspace.frontmost = RunningApplication{.processIdentifier = 11};
    tracker->sampleActivity();
    std::string title;
    for (int i = 0; i < 250; ++i) title += "ñ";
    show(7, "Textos", title + "1");
    tracker->sampleActivity();
    show(7, "Textos", title + "2");
    tracker->sampleActivity();
    const std::string cut = "Textos|" + title.substr(0, 400) + "|-";
    EXPECT_THAT(told(),
                ElementsAre("Textos|Informe — Textos|/home/ana/Informe año.odt",
                            "Textos|b.odt|/home/ana/b.odt", "Navegador|Página|-", "App||-", cut, cut));
}

TEST_F(ActivityTrackerTest, NotesNothingOfItselfOfALockedScreenAndOfWhoDoesNotWantIt) {
    show(7, "Notas", "Obra");
    trackActivity.set(false);
    tracker->sampleActivity();
    trackActivity.set(true);
    paused.set(true);
    tracker->sampleActivity();
    paused.set(false);
    session.locked.set(true);
    tracker->sampleActivity();
    session.locked.set(false);
    for (const auto& identifier : {workspace.own, std::string("com.apple.loginwindow")}) {
        workspace.frontmost->bundleIdentifier = identifier;
        tracker->sampleActivity();
    }
    workspace.own.clear();
    workspace.frontmost->bundleIdentifier.reset();
    tracker->sampleActivity();
    workspace.frontmost.reset();
    tracker->sampleActivity();
    EXPECT_THAT(rows(), SizeIs(0));
}

TEST_F(ActivityTrackerTest, OldRowsGoAtTheStart) {
    show(7, "Notas", "Vieja");
    tracker->sampleActivity();
    EXPECT_THAT(rows(), SizeIs(1));
    workspace.frontmost.reset();
    executor.advanceBy(31 * day);
    tracker->startActivity();
    EXPECT_THAT(rows(), SizeIs(0));
}

TEST_F(ActivityTrackerTest, AnApplicationThatHangsIsLeftAloneForAWhile) {
    show(7, "Lenta", "Obra");
    std::vector<double> budgets;
    accessibility.onLook = [&](double budget) {
        budgets.push_back(budget);
        executor.advanceBy(budget);
    };
    for (int i = 0; i < 4; ++i) tracker->sampleActivity();
    show(8, "Otra", "");
    accessibility.onLook = [&](double budget) { budgets.push_back(budget); };
    tracker->sampleActivity();
    show(7, "Lenta", "Obra");
    executor.advanceBy(300);
    tracker->sampleActivity();
    const double whole = Accessibility::defaultBudget;
    EXPECT_THAT(budgets, ElementsAre(whole, whole, whole, 0, whole, whole));
    EXPECT_THAT(told(), ElementsAre("Lenta|Obra|-", "Otra||-", "Lenta|Obra|-"));
}

}  // namespace
}  // namespace dorix
