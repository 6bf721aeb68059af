#include "base/async/ManualExecutor.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakePasteboard.h"
#include "fakes/overlay/RecordingWindow.h"
#include "shell/CardHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CardHostTest : public testing::Test {
 protected:
    CardHostTest() {
        windows.card = &window;
        card.set(AnswerCard{.id = "1", .answer = "Sí."});
    }

    /// What was asked of the window since the last look, also in the time that it fades.
    std::vector<std::string> asked() {
        executor.advanceBy(1);
        return std::exchange(log, {});
    }

    ManualExecutor executor;
    FakeMouseEventMonitors mouse;
    AppState state;
    std::vector<std::string> log;
    RecordingWindow window{log};
    AppWindows windows;
    AnswerCardPresenter::Card card;
    FakePasteboard pasteboard;
    FakeUrlOpener urls;
    AnswerCardPresenter presenter{
        {.executor = executor, .card = card, .pasteboard = pasteboard, .urls = urls}};
    CardHost host{executor, mouse, state, windows, presenter};
};

TEST_F(CardHostTest, GoesForWhateverIsMeantToCloseIt) {
    const std::vector<std::pair<const char*, std::function<void()>>> ends{
        {"Esc or its button", [this] { presenter.actions.close(); }},
        {"the assistant", [this] { host.hide(); }},
        {"the panel", [this] { state.panelOpen.set(true); }}};
    for (const auto& [what, end] : ends) {
        state.panelOpen.set(false);
        host.show();
        EXPECT_THAT(asked(), ElementsAre("place", "show")) << what;
        EXPECT_TRUE(mouse.isMonitored());
        end();
        EXPECT_FALSE(mouse.isMonitored()) << what;
        EXPECT_THAT(asked(), ElementsAre("hide")) << what;
    }
    host.show();
    mouse.click();
    EXPECT_THAT(asked(), ElementsAre("place", "show", "clickedOutside", "hide"));
    host.hide();
    EXPECT_FALSE(host.call());
    EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(CardHostTest, ANewAnswerStaysUpThoughTheOldOneWasGoing) {
    host.show();
    host.hide();
    executor.advanceBy(0.1);
    host.show();
    EXPECT_THAT(asked(), ElementsAre("place", "show", "place", "show"));
    EXPECT_TRUE(host.call());
    EXPECT_THAT(asked(), ElementsAre("takeKeyboard"));
}

TEST_F(CardHostTest, WhatIsInsertedGoesBehindTheCard) {
    host.show();
    EXPECT_FALSE(performOnCard(presenter, "insert")) << "nobody does";
    std::string typed;
    host.onInsert([&](std::string text) {
        EXPECT_FALSE(host.isVisible());
        typed = std::move(text);
    });
    EXPECT_TRUE(performOnCard(presenter, "insert"));
    EXPECT_EQ(typed, "Sí.");
}

}  // namespace
}  // namespace dorix
