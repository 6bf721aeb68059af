#include "linux/atspi/AtspiProtocol.h"
#include "linux/atspi/FocusTracker.h"

#include <gtest/gtest.h>

namespace dorix {
namespace {

using atspi::axRole;
using atspi::bit;
using atspi::Role;
using atspi::State;

TEST(AtspiRoles, TextIsWhatCanBeDoneWithIt) {
    const auto editable = bit(State::editable);
    const auto lines = bit(State::multiLine);
    EXPECT_EQ(axRole(Role::text, editable), "AXTextField");
    EXPECT_EQ(axRole(Role::text, editable | lines), "AXTextArea");
    EXPECT_EQ(axRole(Role::text, lines), "AXStaticText");
    EXPECT_EQ(axRole(Role::entry, lines), "AXTextArea");
    EXPECT_EQ(axRole(Role::entry, bit(State::readOnly)), "AXStaticText");
    EXPECT_EQ(axRole(Role::comboBox, editable), "AXComboBox");
    EXPECT_EQ(axRole(Role::comboBox, 0), "AXPopUpButton");
}

TEST(FocusTracker, TakesTheOldAndTheNewInEitherOrder) {
    FocusTracker tracker;
    const ObjectRef one{":1.1", "/1"};
    const ObjectRef two{":1.1", "/2"};
    tracker.focusGained(one);
    tracker.focusLost(one);
    EXPECT_EQ(tracker.find(":1.1")->focus, std::nullopt);
    tracker.focusGained(two);
    EXPECT_EQ(tracker.find(":1.1")->focus, "/2");
    tracker.focusGained(one);
    tracker.focusLost(two);
    EXPECT_EQ(tracker.find(":1.1")->focus, "/1");
    EXPECT_EQ(tracker.places(), std::vector{one});
}

TEST(FocusTracker, AnotherWindowPutsTheFocusInDoubt) {
    FocusTracker tracker;
    tracker.windowActivated({":1.1", "/w1"});
    tracker.focusGained({":1.1", "/1"});
    tracker.windowActivated({":1.1", "/w1"});
    EXPECT_FALSE(tracker.find(":1.1")->focusMayBeBehind);
    tracker.windowActivated({":1.1", "/w2"});
    EXPECT_TRUE(tracker.find(":1.1")->focusMayBeBehind);
    tracker.focusGained({":1.1", "/2"});
    EXPECT_FALSE(tracker.find(":1.1")->focusMayBeBehind);
    tracker.gone(":1.1");
    EXPECT_EQ(tracker.find(":1.1"), nullptr);
    EXPECT_TRUE(tracker.places().empty());
}

TEST(FocusTracker, APartKeepsItsPlaceWhileAnotherApplicationHasAMenuOpen) {
    FocusTracker tracker;
    const ObjectRef page{":1.1", "/page"};
    const ObjectRef menu{":1.2", "/item"};
    tracker.focusGained(page);
    tracker.focusGained(menu);
    EXPECT_EQ(tracker.places(), (std::vector{page, menu}));
    tracker.focusLost(menu);
    EXPECT_EQ(tracker.places(), std::vector{page});
    tracker.focusGained({":1.1", "/other"});
    EXPECT_EQ(tracker.places().size(), 1U) << "one for each";
}

}  // namespace
}  // namespace dorix
