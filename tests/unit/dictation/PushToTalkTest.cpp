#include "base/async/ManualExecutor.h"
#include "dictation/PushToTalkMonitor.h"
#include "fakes/FakeKeys.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t rightOptionDown = modifier::option | modifier::deviceRightOption;
constexpr std::uint16_t letter = 0;

class PushToTalkTest : public testing::Test {
 protected:
    PushToTalkTest() {
        const auto record = [this](std::string name) {
            return [this, name] {
                calls.push_back(name);
                phases.push_back(monitor.phase());
            };
        };
        monitor.onBegin = record("begin");
        monitor.onConfirm = record("confirm");
        monitor.onEnd = record("end");
        monitor.onCancel = record("cancel");
        monitor.onEscape = [this] { return escapeIsUsed; };
        monitor.start();
    }

    void press() { keyboard.flags(keycode::rightOption, rightOptionDown); }
    void release() { keyboard.flags(keycode::rightOption, 0); }
    void hold() {
        press();
        executor.advanceBy(0.3);
    }

    ManualExecutor executor;
    FakeKeyEventMonitors keyboard{executor};
    PushToTalkMonitor monitor{executor, keyboard, PushToTalkKey::rightOption};
    std::vector<std::string> calls;
    std::vector<PushToTalkMonitor::Phase> phases;
    bool escapeIsUsed = false;
};

TEST_F(PushToTalkTest, AHoldBeginsConfirmsAndEnds) {
    using enum PushToTalkMonitor::Phase;
    press();
    executor.advanceBy(0.29);
    EXPECT_THAT(calls, ElementsAre("begin"));
    executor.advanceBy(0.01);
    keyboard.keyDown(letter);
    keyboard.flags(keycode::leftShift, rightOptionDown | modifier::shift);
    executor.advanceBy(60);
    release();
    EXPECT_THAT(calls, ElementsAre("begin", "confirm", "end"));
    EXPECT_THAT(phases, ElementsAre(armed, active, idle));
}

TEST_F(PushToTalkTest, ATapAChordOrAnotherModifierCallsItOff) {
    press();
    release();
    press();
    EXPECT_FALSE(keyboard.keyDown(letter));
    release();
    press();
    keyboard.flags(keycode::leftControl, rightOptionDown | modifier::control);
    executor.advanceBy(1);
    EXPECT_THAT(calls, ElementsAre("begin", "cancel", "begin", "cancel", "begin", "cancel"));
}

TEST_F(PushToTalkTest, OnlyTheCleanRightHandKeyCounts) {
    keyboard.flags(keycode::leftOption, modifier::option | modifier::deviceLeftOption);
    keyboard.flags(keycode::rightOption, rightOptionDown | modifier::shift);
    executor.advanceBy(1);
    release();
    EXPECT_THAT(calls, IsEmpty());
    monitor.key = PushToTalkKey::rightCommand;
    press();
    EXPECT_THAT(calls, IsEmpty());
    keyboard.flags(keycode::rightCommand, modifier::command | modifier::deviceRightCommand);
    EXPECT_THAT(calls, ElementsAre("begin"));
}

TEST_F(PushToTalkTest, EscapeCancelsAHoldAndIsSwallowedOnlyInOwnWindows) {
    hold();
    EXPECT_TRUE(keyboard.send(KeyEventMask::keyDown, {keycode::escape, 0}, true));
    EXPECT_THAT(calls, ElementsAre("begin", "confirm", "cancel"));
    EXPECT_FALSE(keyboard.send(KeyEventMask::keyDown, {keycode::escape, 0}, true));
    escapeIsUsed = true;
    EXPECT_TRUE(keyboard.send(KeyEventMask::keyDown, {keycode::escape, 0}, true));
    EXPECT_FALSE(keyboard.send(KeyEventMask::keyDown, {letter, 0}, true));
    EXPECT_FALSE(keyboard.keyDown(keycode::escape)) << "other applications keep their events";
}

TEST_F(PushToTalkTest, GoesByWhenKeysWereStruckHoweverLateThatIsTold) {
    // A tap whose release waited: the hold was confirmed meanwhile.
    hold();
    keyboard.toldLate = 0.1;
    release();
    EXPECT_THAT(calls, ElementsAre("begin", "confirm", "cancel"));
    calls.clear();
    // So did the letter of a chord.
    keyboard.toldLate = 0;
    hold();
    keyboard.toldLate = 0.2;
    EXPECT_FALSE(keyboard.keyDown(letter));
    EXPECT_THAT(calls, ElementsAre("begin", "confirm", "cancel"));
    calls.clear();
    // A hold of which nothing was told before it ended.
    keyboard.toldLate = 5;
    press();
    keyboard.toldLate = 1;
    release();
    EXPECT_THAT(calls, ElementsAre("begin", "confirm", "end"));
    calls.clear();
    // A press that was told late is confirmed when it should be.
    keyboard.toldLate = 0.2;
    press();
    executor.advanceBy(0.1);
    EXPECT_THAT(calls, ElementsAre("begin", "confirm"));
}

TEST_F(PushToTalkTest, AHeldAltGrTypesItsCharacterUnlessTheUserTalks) {
    bool spoken = true;
    monitor.hasSpoken = [&] { return spoken; };
    hold();
    keyboard.keyDown(letter);
    keyboard.holdKeyIsAltGr = true;
    keyboard.keyDown(letter);
    EXPECT_THAT(calls, ElementsAre("begin", "confirm"));
    spoken = false;
    EXPECT_FALSE(keyboard.keyDown(letter));
    release();
    EXPECT_THAT(calls, ElementsAre("begin", "confirm", "cancel"));
}

TEST_F(PushToTalkTest, StartingAgainKeepsFourMonitorsAndDoesWithoutARefusedOne) {
    const auto installed = [this](bool refuse) {
        keyboard.refuseGlobal = refuse;
        monitor.start();
        return keyboard.installed();
    };
    EXPECT_EQ(installed(false), 4);
    EXPECT_EQ(installed(true), 2);
    monitor.stop();
    EXPECT_EQ(keyboard.installed(), 0);
}

}  // namespace
}  // namespace dorix
