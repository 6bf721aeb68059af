#include "base/async/ManualExecutor.h"
#include "overlay/HUDContent.h"
#include "overlay/HUDPresenter.h"
#include "overlay/LevelFeed.h"
#include "overlay/Placement.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

using Look = HUDContent::Look;

class HUDTest : public ::testing::Test {
 protected:
    void show(const HUDPhase& phase) {
        state.hud.set(phase);
        executor.advanceBy(0);
    }

    ManualExecutor executor;
    AppState state;
    Observable<std::string> partial;
    HUDPresenter presenter{executor, state, partial};
};

TEST_F(HUDTest, WhileListeningThePartialTextStandsInPlaceOfTheAdvice) {
    state.hud.set(HUDPhase::listening());
    EXPECT_EQ(hudContent(state, ""), (HUDContent{.look = Look::listening,
                                                 .text = "Se escribe al terminar de hablar · Esc cancela",
                                                 .isPlaceholder = true}));
    EXPECT_EQ(hudContent(state, "hola"), (HUDContent{.look = Look::listening, .text = "hola"}));
    state.asking.set(true);
    EXPECT_EQ(hudContent(state, ""), (HUDContent{.look = Look::listening,
                                                 .text = "Pregunta lo que quieras sobre la pantalla…",
                                                 .caption = "Mirando la ventana activa",
                                                 .isPlaceholder = true}));
    state.handsFree.set(true);
    EXPECT_EQ(hudContent(state, "qué es").caption,
              "Mirando la ventana activa · responde al terminar de hablar");
}

TEST_F(HUDTest, TheWindowGoesAQuarterSecondAfterTheWords) {
    show(HUDPhase::done("Escrito en Notas"));
    EXPECT_TRUE(presenter.isShown.get() && presenter.isOrderedIn.get());
    show(HUDPhase::hidden());
    EXPECT_FALSE(presenter.isShown.get());
    executor.advanceBy(0.24);
    EXPECT_TRUE(presenter.isOrderedIn.get());
    EXPECT_EQ(presenter.content.get().text, "Escrito en Notas") << "it fades with its words";
    executor.advanceBy(0.02);
    EXPECT_FALSE(presenter.isOrderedIn.get());
    EXPECT_FALSE(executor.hasTimers());
}

TEST_F(HUDTest, WhatShowsAgainMeanwhileKeepsItsWindow) {
    int placed = 0;
    presenter.onPlace = [&] { ++placed; };
    show(HUDPhase::processing());
    show(HUDPhase::hidden());
    executor.advanceBy(0.2);
    show(HUDPhase::info("otra vez"));
    executor.advanceBy(1);
    EXPECT_TRUE(presenter.isOrderedIn.get());
    EXPECT_EQ(placed, 2);
    state.hud.set(HUDPhase::hidden());
    state.showFirstRunHint.set(true);
    executor.advanceBy(1);
    EXPECT_EQ(presenter.content.get().look, Look::hint);
}

TEST_F(HUDTest, WordsThatComeWhileItFadesAreNotShown) {
    show(HUDPhase::listening());
    partial.set("uno dos");
    EXPECT_EQ(presenter.content.get().text, "uno dos");
    show(HUDPhase::hidden());
    partial.set("");
    EXPECT_EQ(presenter.content.get().text, "uno dos");
}

TEST(HUDPlacementTest, ItOpensTowardsTheMiddle) {
    const Screens screens{{.frame = {0, 0, 1280, 800}, .visibleFrame = {0, 30, 1280, 770}}};
    const auto glyphAt = [&](double midX) { return placeHUD(iconFrame({midX - 48, 400 - 48}), screens); };
    const auto left = glyphAt(640);
    EXPECT_TRUE(left.opensLeft);
    EXPECT_EQ(left.frame, (Rect{640 - 26 - 12 - 440, 400 - 70, 440, 140}));
    const auto right = glyphAt(639.5);
    EXPECT_FALSE(right.opensLeft);
    EXPECT_EQ(right.frame.minX(), 639.5 + 26 + 12);
}

TEST(HUDPlacementTest, TheBubbleKeepsWithinTheWorkArea) {
    const Screens small{{.frame = {0, 0, 640, 400}, .visibleFrame = {0, 30, 640, 370}}};
    const auto middle = placeHUD(iconFrame({330 - 48, 400}), small);
    EXPECT_LT(middle.frame.minX(), 0);
    EXPECT_EQ(middle.usable.minX(), 4);
    EXPECT_EQ(middle.usable.maxX(), middle.frame.maxX());
    const auto bottom = placeHUD(iconFrame(iconOrigin(std::nullopt, small)), small);
    EXPECT_EQ(bottom.usable.minY(), 34);
}

TEST(LevelFeedTest, AtMostThirtyStepsASecondAndNoneAtRest) {
    ManualExecutor executor;
    Observable<float> level;
    LevelFeed feed(executor, level);
    int steps = 0;
    const auto count = feed.shown.subscribe([&](double) { ++steps; });
    level.set(0.8F);
    EXPECT_EQ(steps, 0) << "nobody listens";
    feed.setActive(true);
    for (int i = 0; i < 100; ++i) {
        level.set(0.3F + 0.005F * static_cast<float>(i));
        executor.advanceBy(0.01);
    }
    EXPECT_LE(steps, 31);
    EXPECT_GT(feed.shown.get(), 0.6);
    executor.advanceBy(2);
    EXPECT_FALSE(executor.hasTimers()) << "a steady level needs no steps";
    feed.setActive(false);
    EXPECT_EQ(feed.shown.get(), 0);
    level.set(0.1F);
    EXPECT_FALSE(executor.hasTimers());
}

}  // namespace
}  // namespace dorix
