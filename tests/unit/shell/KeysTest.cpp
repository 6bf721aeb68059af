#include "dictation/WorkingKeys.h"
#include "fakes/FakeKeys.h"
#include "fakes/dictation/DictationBench.h"
#include "shell/Keys.h"
#include "shell/Notices.h"

#include <gtest/gtest.h>

namespace dorix {
namespace {

constexpr std::uint32_t dictationKey = 1;
constexpr std::uint32_t askKey = 2;

/// The keys in front of the flow.
class KeysTest : public testing::Test, protected DictationBench {
 protected:
    void listen() {
        keys.install();
        keys.listen();
    }
    void press() { keyboard.flags(keycode::rightOption, modifier::option | modifier::deviceRightOption); }
    void release() { keyboard.flags(keycode::rightOption, 0); }
    void hotKey(std::uint32_t id, std::uint32_t kind) {
        hotKeys.send(id, kind);
        executor.runPosted();
    }
    bool escape() { return keyboard.send(KeyEventMask::keyDown, {keycode::escape, 0}, true); }

    FakeKeyEventMonitors keyboard{executor};
    FakeHotKeyRegistrar hotKeys{executor};
    Keys keys{executor, keyboard, hotKeys, state, settings, permissions, speech, controller};
    Toasts toasts{state, settings, controller};
};

TEST_F(KeysTest, ATapOrEscapeLeavesNothingBehind) {
    listen();
    press();
    EXPECT_TRUE(speech.isOn);
    release();
    EXPECT_FALSE(speech.isOn);
    EXPECT_TRUE(sounds.played.empty());
    press();
    executor.advanceBy(0.3);
    escape();
    EXPECT_FALSE(speech.isOn);
    release();
    executor.advanceBy(10);
    EXPECT_EQ(state.hud.get(), HUDPhase::hidden());
    EXPECT_EQ(screen.cancelled, 1) << "what was under way at the tap";
    EXPECT_FALSE(inserted);

    hotKey(dictationKey, HotKeyRegistrar::eventPressed);
    hotKey(dictationKey, HotKeyRegistrar::eventReleased);
    EXPECT_TRUE(speech.isOn) << "hands-free";
    EXPECT_TRUE(escape()) << "it was of use";
    EXPECT_FALSE(speech.isOn);
    EXPECT_FALSE(escape());
}

TEST_F(KeysTest, AHotKeyTakesOverFromTheHoldKey) {
    grants.screen = true;
    listen();
    press();
    executor.advanceBy(1);
    hotKey(askKey, HotKeyRegistrar::eventPressed);
    release();  // the press it belonged to is over
    EXPECT_TRUE(speech.isOn);
    EXPECT_TRUE(state.asking.get());
    speech.transcript = "¿qué es esto?";
    executor.advanceBy(0.5);
    hotKey(askKey, HotKeyRegistrar::eventReleased);
    EXPECT_EQ(state.hud.get(), HUDPhase::processing());
    executor.advanceBy(1);
    EXPECT_FALSE(inserted) << "a question is not typed";
}

TEST_F(KeysTest, PausingEndsAPressAndKeepsTheMicrophoneShut) {
    listen();
    press();
    settings.paused.set(true);
    EXPECT_FALSE(speech.isOn);
    release();
    press();
    EXPECT_FALSE(speech.isOn);
    settings.paused.set(false);
    release();
    press();
    EXPECT_TRUE(speech.isOn);
}

TEST_F(KeysTest, WhoHoldsTheKeyWhilePausedIsToldSoOnceAPress) {
    listen();
    settings.paused.set(true);
    press();
    executor.advanceBy(0.29);
    release();
    press();
    keyboard.keyDown(keycode::v);
    executor.advanceBy(1);
    release();
    EXPECT_EQ(state.hud.get(), HUDPhase::hidden()) << "a tap and a chord are no attempt to dictate";
    press();
    executor.advanceBy(3);
    EXPECT_EQ(state.hud.get().kind, HUDPhase::Kind::info);
    executor.advanceBy(60);
    EXPECT_EQ(state.hud.get(), HUDPhase::hidden());
    release();
    hotKey(dictationKey, HotKeyRegistrar::eventPressed);
    EXPECT_EQ(state.hud.get().kind, HUDPhase::Kind::info);
    executor.advanceBy(60);
    press();
    settings.paused.set(false);
    executor.advanceBy(1);
    EXPECT_EQ(state.hud.get(), HUDPhase::hidden());
}

TEST_F(KeysTest, TextsNameTheKeysThatWork) {
    const std::string both = "Mantén pulsado ⌥ Espacio (o %@) y habla. Con ⌥⇧ Espacio, pregunta.";
    const auto named = [&](const std::string& text) { return namingKeys(text, state.keys.get()); };
    listen();
    EXPECT_EQ(named(both), "Mantén pulsado ⌥ Espacio (o ⌥ derecha) y habla. Con ⌥⇧ Espacio, pregunta.");

    hotKeys.refuseWith = 10;
    keyboard.change();
    EXPECT_EQ(named(both), "Mantén pulsado ⌥ derecha y habla. Con ⌥ derecha, pregunta.");
    EXPECT_EQ(named("⌥ Espacio para dictar"), "⌥ derecha para dictar");
    EXPECT_FALSE(needsKey(state.keys.get()));
    keyboard.holdKeyIsAltGr = true;
    keyboard.change();
    EXPECT_EQ(named("⌥ Espacio para dictar"), "AltGr para dictar") << "by what is printed on it";
    EXPECT_TRUE(needsKey(state.keys.get()));
    keyboard.hasHoldKey = false;
    keyboard.change();
    EXPECT_EQ(dictationKeyName(state.keys.get()), std::nullopt);
    EXPECT_EQ(named(both), "Mantén pulsado la tecla que elijas y habla. Con la tecla que elijas, pregunta.");

    hotKeys.refuseWith = 0;
    keys.lookAgain();
    EXPECT_EQ(named(both), "Mantén pulsado ⌥ Espacio y habla. Con ⌥⇧ Espacio, pregunta.");
    hotKey(dictationKey, HotKeyRegistrar::eventPressed);
    EXPECT_TRUE(speech.isOn) << "the window manager has let go of it";
}

TEST_F(KeysTest, ANewHoldKeyEndsThePressOfTheOldOne) {
    listen();
    press();
    executor.advanceBy(0.5);
    settings.pushToTalkKey.set(PushToTalkKey::rightControl);
    EXPECT_FALSE(speech.isOn);
    EXPECT_EQ(state.hud.get(), HUDPhase::hidden());
    release();
    keyboard.flags(keycode::rightControl, modifier::control | modifier::deviceRightControl);
    EXPECT_TRUE(speech.isOn);
}

TEST_F(KeysTest, EscapeIsTheRecordingsWhileOneIsShown) {
    int told = 0;
    keys.onFreeEscape = [&] { ++told; };
    speech.lastWords = 1;
    listen();
    press();
    EXPECT_FALSE(keyboard.withheld()) << "it may be a chord yet";
    executor.advanceBy(0.3);
    EXPECT_EQ(keyboard.withheld(), keycode::escape);
    keyboard.keyDown(keycode::escape);
    EXPECT_FALSE(keyboard.withheld());
    release();

    hotKey(dictationKey, HotKeyRegistrar::eventPressed);
    hotKey(dictationKey, HotKeyRegistrar::eventReleased);
    EXPECT_EQ(keyboard.withheld(), keycode::escape) << "hands-free";
    hotKey(dictationKey, HotKeyRegistrar::eventPressed);
    EXPECT_FALSE(keyboard.withheld()) << "what was said is on its way";
    EXPECT_FALSE(escape());
    EXPECT_EQ(told, 0);
    executor.advanceBy(5);
    keyboard.keyDown(keycode::escape);
    EXPECT_FALSE(escape());
    EXPECT_EQ(told, 2) << "wherever it is pressed, and nobody else loses it";
}

TEST_F(KeysTest, AnAltGrChordLeavesNothingBehindAndSpeechIsNotLostToOne) {
    listen();
    keyboard.holdKeyIsAltGr = true;
    const auto holdAndType = [this](const auto& speak) {
        press();
        executor.advanceBy(0.5);
        speak();
        keyboard.keyDown(0);
        return speech.isOn;
    };
    EXPECT_FALSE(holdAndType([&] { speech.level.set(0.6F); })) << "the click of a key";
    EXPECT_EQ(state.hud.get(), HUDPhase::hidden());
    release();
    EXPECT_EQ(state.hud.get(), HUDPhase::hidden());
    EXPECT_TRUE(holdAndType([&] {
        for (const float level : {0.5F, 0.6F, 0.7F, 0.6F}) speech.level.set(level);
    }));
    release();
    executor.advanceBy(10);
    EXPECT_TRUE(holdAndType([&] { speech.partial.set("hola"); }));
}

TEST_F(KeysTest, AHotKeyIsHeldForAsLongAsItWasHoweverLateThatIsTold) {
    listen();
    hotKeys.send(dictationKey, HotKeyRegistrar::eventPressed, 0.5);
    executor.runPosted();
    EXPECT_TRUE(speech.isOn);
    hotKey(dictationKey, HotKeyRegistrar::eventReleased);
    EXPECT_FALSE(state.handsFree.get());
    EXPECT_EQ(state.hud.get(), HUDPhase::processing());
}

TEST_F(KeysTest, AGrantThatComesWithAPressDoesNotLoseThePress) {
    grants.trusted = false;
    permissions.refresh();
    listen();
    grants.trusted = true;
    press();  // reads the grants anew
    executor.advanceBy(0.3);
    EXPECT_EQ(state.hud.get(), HUDPhase::listening());
}

TEST_F(KeysTest, AToastDisturbsNothing) {
    listen();
    for (auto* busy : {&state.showFirstRunHint, &state.panelOpen, &state.meetingActive, &settings.paused}) {
        busy->set(true);
        EXPECT_FALSE(toasts.show("nuevo"));
        busy->set(false);
    }
    press();
    EXPECT_FALSE(toasts.show("nuevo"));
    release();
    EXPECT_TRUE(toasts.show("nuevo"));
    executor.advanceBy(4.9);
    EXPECT_EQ(state.hud.get(), HUDPhase::learned("nuevo"));
    executor.advanceBy(0.1);
    EXPECT_EQ(state.hud.get(), HUDPhase::hidden());
}

}  // namespace
}  // namespace dorix
