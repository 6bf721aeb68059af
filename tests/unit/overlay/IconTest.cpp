#include "fakes/MemoryUserDefaults.h"
#include "overlay/Icon.h"
#include "overlay/Placement.h"

#include <gtest/gtest.h>

#include <limits>

namespace dorix {
namespace {

// A panel of 30 points at the bottom of the main screen, and a second screen at its right.
const Screens oneScreen{{.frame = {0, 0, 1280, 800}, .visibleFrame = {0, 30, 1280, 770}}};
const Screens twoScreens{oneScreen.front(),
                         {.frame = {1280, 0, 1920, 1080}, .visibleFrame = {1280, 0, 1920, 1080}}};
constexpr Point defaultPlace{1280 - 24 - 52 - 22, 30 + 24 - 22};

TEST(IconPlacementTest, ASavedPlaceHoldsWhereItShows) {
    EXPECT_EQ(iconOrigin(std::nullopt, oneScreen), defaultPlace);
    EXPECT_EQ(iconOrigin(Point{300, 200}, oneScreen), (Point{300, 200}));
    EXPECT_EQ(iconOrigin(Point{2000, 900}, twoScreens), (Point{2000, 900}));
    EXPECT_EQ(iconOrigin(Point{2000, 900}, oneScreen), defaultPlace) << "the screen has been unplugged";
    EXPECT_EQ(iconOrigin(Point{300, -66}, oneScreen), defaultPlace) << "it would touch the frame only";
    EXPECT_EQ(iconOrigin(Point{300, -65}, oneScreen), (Point{300, 12})) << "one row shows: pulled in";
}

TEST(IconPlacementTest, TheClampLeavesTheMarginBeyondTheFrame) {
    EXPECT_EQ(clampedIconOrigin({-500, -500}, oneScreen), (Point{-18, 30 - 18}));
    EXPECT_EQ(clampedIconOrigin({5000, 5000}, oneScreen), (Point{1280 + 18 - 96, 800 + 18 - 96}));
    EXPECT_EQ(clampedIconOrigin({1290, 300}, twoScreens), (Point{1290, 300}));
    EXPECT_EQ(clampedIconOrigin({1200, 900}, twoScreens), (Point{1280 - 18, 900}))
        << "above the first screen";
}

TEST(IconPlacementTest, WhatIsNoPlaceCountsAsNone) {
    MemoryUserDefaults defaults;
    EXPECT_FALSE(savedIconOrigin(defaults));
    saveIconOrigin(defaults, {12.5, -3});
    EXPECT_EQ(savedIconOrigin(defaults), (Point{12.5, -3}));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Json& wrong : {Json("12,30"), Json::array({1}), Json::array({1, 2, 3}), Json::array({1, "2"}),
                              Json::object({{"x", 1}}), Json(7), Json(), Json::array({nan, 2})}) {
        defaults.set("iconOrigin", wrong);
        EXPECT_FALSE(savedIconOrigin(defaults)) << wrong;
    }
    defaults.set("iconOrigin", Json::array({12, 30}));
    EXPECT_EQ(savedIconOrigin(defaults), (Point{12, 30}));
}

TEST(IconMouseTest, ASlipOfTwoPointsClicksAndFromThreeOnItDrags) {
    IconMouse mouse;
    mouse.down({100, 100}, {50, 60});
    EXPECT_FALSE(mouse.dragged({102, 102}));
    EXPECT_EQ(mouse.up(), IconMouse::Release::click);
    EXPECT_EQ(mouse.up(), IconMouse::Release::none);
    EXPECT_FALSE(mouse.dragged({200, 200})) << "the button is up";
    mouse.down({100, 100}, {50, 60});
    EXPECT_EQ(mouse.dragged({103, 100}), (Point{53, 60}));
    EXPECT_EQ(mouse.dragged({101, 99}), (Point{51, 59})) << "back near to where it began";
    EXPECT_EQ(mouse.up(), IconMouse::Release::drag);
    mouse.down({100, 100}, {50, 60});
    EXPECT_EQ(mouse.up(), IconMouse::Release::click) << "the last drag is forgotten";
}

TEST(IconLookTest, APauseShowsWhereNothingElseDoes) {
    EXPECT_EQ(iconLook(HUDPhase::Kind::hidden, false), IconLook::idle);
    EXPECT_EQ(iconLook(HUDPhase::Kind::done, false), IconLook::idle);
    EXPECT_EQ(iconLook(HUDPhase::Kind::learned, true), IconLook::paused);
    EXPECT_EQ(iconLook(HUDPhase::Kind::error, true), IconLook::error);
    EXPECT_EQ(iconLook(HUDPhase::Kind::processing, true), IconLook::processing);
}

}  // namespace
}  // namespace dorix
