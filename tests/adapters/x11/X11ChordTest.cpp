#include "adapters/harness/XDesktop.h"
#include "linux/x11/X11ChordStriker.h"
#include "linux/x11/XcbXkb.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace dorix {
namespace {

using testing::ElementsAre;

/// An application that reads each key as toolkits do: by the layout in force when it comes.
class Reader {
 public:
    explicit Reader(OtherApplication& application)
        : connection_(application.connection()),
          token_(connection_.listen(XCB_KEY_PRESS, [this](const auto& event) {
              pressed.push_back(meaningOf(reinterpret_cast<const xcb_key_press_event_t&>(event)));
          })) {}

    /// "MODIFIERS SYMBOL" of each press, the symbol without modifiers.
    std::vector<std::string> pressed;

 private:
    std::string meaningOf(const xcb_key_press_event_t& event) {
        const X11Keymap keymap(connection_, context_.get(),
                               xkb_x11_get_core_keyboard_device_id(connection_.get()));
        const auto group = static_cast<std::uint8_t>(event.state >> 13U & 3U);
        std::array<char, 64> name{};
        xkb_keysym_get_name(keymap.symbol(event.detail, group), name.data(), name.size());
        std::string modifiers;
        for (const auto& [bit, letter] : {std::pair{XCB_MOD_MASK_SHIFT, 'S'},
                                          {XCB_MOD_MASK_LOCK, 'L'},
                                          {XCB_MOD_MASK_CONTROL, 'C'},
                                          {XCB_MOD_MASK_1, '1'},
                                          {XCB_MOD_MASK_3, '3'},
                                          {XCB_MOD_MASK_4, '4'},
                                          {XCB_MOD_MASK_5, '5'}}) {
            if ((event.state & bit) != 0) modifiers += letter;
        }
        return modifiers + ' ' + name.data();
    }

    X11Connection& connection_;
    std::shared_ptr<xkb_context> context_{xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref};
    Subscription token_;
};

class X11ChordTest : public XDesktopTest {
 protected:
    ~X11ChordTest() override {
        setControls(0);
        xcb_xkb_latch_lock_state(user_->get(), XCB_XKB_ID_USE_CORE_KBD, 0xFF, 0, 1, 0, 0xFF, 1, 0);
        settle();
    }

    void strike(X11ChordStriker& striker) {
        striker.strike({keyboard_.strikeModifier(XCB_MOD_MASK_CONTROL).value(),
                        keyboard_.strikeLetter(keycode::v).value()});
        settle();
    }

    /// What the application takes the chord for.
    std::string struck() {
        reader_.pressed.clear();
        strike(striker_);
        const auto isChord = [](const std::string& key) {
            return key.contains("C ") && !key.contains("Control");
        };
        const auto chord = [&] { return std::ranges::find_if(reader_.pressed, isChord); };
        EXPECT_TRUE(waitFor([&] { return chord() != reader_.pressed.end(); }, 3))
            << testing::PrintToString(reader_.pressed);
        return chord() == reader_.pressed.end() ? "" : *chord();
    }

    /// Of the helps with typing these, and StickyKeys such that two keys at once end them.
    void setControls(std::uint32_t enabled) {
        constexpr auto affected =
            XCB_XKB_BOOL_CTRL_SLOW_KEYS | XCB_XKB_BOOL_CTRL_BOUNCE_KEYS | XCB_XKB_BOOL_CTRL_STICKY_KEYS;
        constexpr auto changed =
            std::uint32_t{XCB_XKB_CONTROL_CONTROLS_ENABLED} | XCB_XKB_BOOL_CTRL_STICKY_KEYS;
        constexpr auto options = XCB_XKB_AX_OPTION_TWO_KEYS | XCB_XKB_AX_OPTION_LATCH_TO_LOCK;
        const std::array<std::uint8_t, 32> perKeyRepeat{};
        xcb_xkb_set_controls(user_->get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, options,
                             affected, enabled, changed, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0,
                             perKeyRepeat.data());
        settle();
    }

    struct State {
        int base = 0;
        int latched = 0;
        int locked = 0;
        int group = 0;
        std::uint32_t controls = 0;
        int options = 0;
        bool operator==(const State&) const = default;
    };
    State state() {
        settle();
        const auto state =
            user_->reply(xcb_xkb_get_state_reply, xcb_xkb_get_state(user_->get(), XCB_XKB_ID_USE_CORE_KBD));
        const auto controls = user_->reply(xcb_xkb_get_controls_reply,
                                           xcb_xkb_get_controls(user_->get(), XCB_XKB_ID_USE_CORE_KBD));
        return {state->baseMods, state->latchedMods,        state->lockedMods,
                state->group,    controls->enabledControls, controls->accessXOption};
    }

    void lockGroup(std::uint8_t group) {
        xcb_xkb_latch_lock_state(user_->get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, group, 0, 0, 0);
        settle();
    }

    X11ChordStriker striker_{*connection_, keyboard_, input_};
    std::unique_ptr<OtherApplication> application_ = openApplication("editor", "Editor");
    Reader reader_{*application_};
};

TEST_F(X11ChordTest, IsControlAndTheLetterInEveryLayout) {
    for (const char* layout : {"us", "us -option ctrl:swapcaps", "us -option ctrl:swap_lalt_lctl",
                               "us -option ctrl:nocaps", "us -option ctrl:rctrl_ralt", "es", "de", "fr",
                               "us -variant dvorak", "de -variant neo", "fr -variant bepo", "es,ru"}) {
        // Options add up.
        setLayout(std::string("-option '' ") + layout);
        EXPECT_EQ(struck(), "C v") << layout;
    }
    setLayout("-option '' us,gr");
    lockGroup(1);
    EXPECT_EQ(struck(), "C Greek_omega") << "the key that gives v in the other group";
    lockGroup(0);
    setLayout("-option '' ru,us");
    EXPECT_EQ(struck(), "C Cyrillic_em");
    setLayout("-option '' ru");
    EXPECT_EQ(struck(), "C Cyrillic_em") << "the key in the letter's place";
}

TEST_F(X11ChordTest, GoesByTheLayoutOfTheKeyboardThatStrikes) {
    const std::string board = std::to_string(boardDevice());
    setLayout("-device " + board + " fr -option ctrl:swapcaps");
    for (int i = 0; i < 2; ++i) {
        boardKey(55, KeyStroke::Direction::down);
        boardKey(55, KeyStroke::Direction::up);
        EXPECT_EQ(struck(), "C v");
    }
    setLayout("us -option ''");
    setLayout("-device " + std::to_string(testDevice()) + " us -variant dvorak -option ctrl:swapcaps");
    boardKey(55, KeyStroke::Direction::down);
    boardKey(55, KeyStroke::Direction::up);
    EXPECT_EQ(struck(), "C v");
}

TEST_F(X11ChordTest, MindsNothingThatIsHeld) {
    setLayout("es,us");
    lockGroup(1);
    for (const std::uint16_t held : {keycode::leftShift, keycode::rightOption, keycode::leftOption,
                                     keycode::rightCommand, keycode::rightControl}) {
        const auto key = keyboard_.keyFor(held).value();
        boardKey(key, KeyStroke::Direction::down);
        const auto before = state();
        ASSERT_NE(before.base, 0);
        EXPECT_EQ(struck(), "C v") << held;
        EXPECT_EQ(state(), before) << held;
        boardKey(key, KeyStroke::Direction::up);
        EXPECT_EQ(state().base, 0) << held;
        EXPECT_FALSE(isDown(testDevice(), key)) << held;
    }
}

TEST_F(X11ChordTest, MindsNothingThatIsLatchedOrLocked) {
    tapKey(keyboard_.keyForSymbol(XKB_KEY_Caps_Lock).value());
    setControls(XCB_XKB_BOOL_CTRL_STICKY_KEYS);
    for (const auto code : {keycode::leftShift, keycode::rightControl, keycode::leftOption}) {
        const auto key = keyboard_.keyFor(code).value();
        for (const bool locked : {false, true}) {
            tapBoardKey(key);
            const auto before = state();
            ASSERT_EQ(before.latched != 0, !locked);
            EXPECT_EQ(struck(), "LC v") << code;
            EXPECT_EQ(state(), before) << code;
        }
        tapBoardKey(key);  // and no longer locked
        ASSERT_EQ(state().locked, XCB_MOD_MASK_LOCK);
        // The lift of a held key would latch it.
        boardKey(key, KeyStroke::Direction::down);
        EXPECT_EQ(struck(), "LC v") << code;
        boardKey(key, KeyStroke::Direction::up);
        tapBoardKey(keyboard_.keyForSymbol(XKB_KEY_a).value());
    }
    tapKey(keyboard_.keyForSymbol(XKB_KEY_Caps_Lock).value());
}

TEST_F(X11ChordTest, GoesThroughWhatFiltersKeys) {
    for (const auto filter : {XCB_XKB_BOOL_CTRL_SLOW_KEYS, XCB_XKB_BOOL_CTRL_BOUNCE_KEYS}) {
        setControls(filter);
        const auto before = state();
        for (int i = 0; i < 3; ++i) EXPECT_EQ(struck(), "C v") << filter;
        EXPECT_EQ(state(), before) << filter;
    }
}

TEST_F(X11ChordTest, WhatADeadProgramHeldIsLetGoOf) {
    const auto key = keyboard_.keyFor(keycode::leftShift).value();
    boardKey(key, KeyStroke::Direction::down);
    auto doomed = connectTo(loop_);
    X11Keyboard keyboard(*doomed);
    X11KeyInput input(*doomed, keyboard);
    {
        X11ChordStriker striker(*doomed, keyboard, input);
        strike(striker);
        ASSERT_TRUE(isDown(testDevice(), key));
        ::shutdown(xcb_get_file_descriptor(doomed->get()), SHUT_RDWR);
    }
    boardKey(key, KeyStroke::Direction::up);
    ASSERT_TRUE(isDown(testDevice(), key));
    X11KeyInput anew(*connection_, keyboard_);
    const X11ChordStriker next(*connection_, keyboard_, anew);
    settle();
    EXPECT_FALSE(isDown(testDevice(), key));
    EXPECT_EQ(anew.modifierFlags(), 0U);
    EXPECT_EQ(state().base, 0);
}

TEST_F(X11ChordTest, AMenuKeyThatIsLiftedOpensNoMenu) {
    const auto key = keyboard_.keyFor(keycode::rightOption).value();
    boardKey(key, KeyStroke::Direction::down);
    EXPECT_EQ(struck(), "C v");
    boardKey(key, KeyStroke::Direction::up);
    ASSERT_TRUE(waitFor([&] { return application_->keys().back() == "-Alt_R/8"; }));
    EXPECT_THAT(application_->keys(),
                ElementsAre("+Alt_R/0", "+none/8", "-none/8", "-Alt_R/8", "+Control_L/0", "+v/4", "-v/4",
                            "-Control_L/4", "+Alt_R/0", "+none/8", "-none/8", "-Alt_R/8"));
}

TEST_F(X11ChordTest, AChangeOfLayoutLeavesNothingHeld) {
    const auto key = keyboard_.keyFor(keycode::leftShift).value();
    boardKey(key, KeyStroke::Direction::down);
    EXPECT_EQ(struck(), "C v");
    setLayout("de -option ctrl:swapcaps");
    EXPECT_EQ(struck(), "C v");
    boardKey(key, KeyStroke::Direction::up);
    EXPECT_EQ(state().base, 0);
    EXPECT_FALSE(isDown(testDevice(), key));
}

}  // namespace
}  // namespace dorix
