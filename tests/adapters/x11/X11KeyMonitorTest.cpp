#include "adapters/harness/XDesktop.h"
#include "linux/x11/X11KeyEventMonitors.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <unistd.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr KeyEvent rightOptionDown{keycode::rightOption, modifier::option | modifier::deviceRightOption};
constexpr KeyEvent rightOptionUp{keycode::rightOption, 0};

KeyEvent withoutTime(KeyEvent event) {
    event.time = 0;
    return event;
}

class X11KeyMonitorTest : public XDesktopTest {
 protected:
    X11KeyMonitorTest() {
        const auto record = [](auto& into) {
            return [&into](const KeyEvent& event) { into.push_back(withoutTime(event)); };
        };
        tokens_.push_back(monitors_->addGlobalMonitor(KeyEventMask::flagsChanged, [this](const auto& event) {
            times_.push_back(event.time);
            if (isForUs_) monitors_->keepMenuShut();
        }));
        tokens_.push_back(monitors_->addGlobalMonitor(KeyEventMask::flagsChanged, record(flags_)));
        tokens_.push_back(monitors_->addGlobalMonitor(KeyEventMask::keyDown, record(keys_)));
        tokens_.push_back(monitors_->addLocalMonitor(KeyEventMask::keyDown, [this](const KeyEvent& event) {
            localKeys_.push_back(withoutTime(event));
            return true;
        }));
    }

    /// What the application gets of a key that is held for a while, and of one that is tapped meanwhile.
    std::vector<std::string> holdFor(OtherApplication& application, std::uint16_t code, double seconds,
                                     std::optional<std::uint16_t> tapped = std::nullopt) {
        application.forgetKeys();
        flags_.clear();
        userDown(code);
        if (tapped) tap(*tapped);
        loop_.runFor(seconds);
        userUp(code);
        const auto& keys = application.keys();
        const auto hasGoneUp = [&] {
            return !keys.empty() && keys.back().starts_with("-" + keys.front().substr(1, 3));
        };
        EXPECT_TRUE(waitFor(hasGoneUp));
        return application.keys();
    }

    std::uint16_t coreKeyboard() {
        return static_cast<std::uint16_t>(xkb_x11_get_core_keyboard_device_id(user_->get()));
    }

    std::unique_ptr<X11KeyEventMonitors> monitors_ =
        std::make_unique<X11KeyEventMonitors>(*connection_, keyboard_, input_, windows_);
    std::vector<Subscription> tokens_;
    std::vector<KeyEvent> flags_;
    std::vector<KeyEvent> keys_;
    std::vector<KeyEvent> localKeys_;
    std::vector<double> times_;
    bool isForUs_ = true;  // what is held
};

TEST_F(X11KeyMonitorTest, RightAltIsRightOptionInEveryLayout) {
    for (const char* layout : {"us", "es", "de", "us,ru -option grp:menu_toggle", "us -variant intl"}) {
        setLayout(layout);
        flags_.clear();
        tap(keycode::rightOption);
        EXPECT_THAT(flags_, ElementsAre(rightOptionDown, rightOptionUp)) << layout;
    }
    EXPECT_EQ(keyboard_.keyFor(keycode::rightOption), 108);
}

TEST_F(X11KeyMonitorTest, TellsTheSidesOfModifiersAndWhatIsHeldAlready) {
    userDown(keycode::leftShift);
    userDown(keycode::rightCommand);
    userUp(keycode::leftShift);
    userUp(keycode::rightCommand);
    constexpr auto shift = modifier::shift | modifier::deviceLeftShift;
    constexpr auto command = modifier::command | modifier::deviceRightCommand;
    EXPECT_THAT(
        flags_,
        ElementsAre(KeyEvent{keycode::leftShift, shift}, KeyEvent{keycode::rightCommand, shift | command},
                    KeyEvent{keycode::leftShift, command}, KeyEvent{keycode::rightCommand, 0}));
    flags_.clear();
    tap(keycode::rightControl);
    tap(keycode::leftOption);
    EXPECT_EQ(flags_[0].modifierFlags, modifier::control | modifier::deviceRightControl);
    EXPECT_EQ(flags_[2].modifierFlags, modifier::option | modifier::deviceLeftOption);
    EXPECT_TRUE(monitors_->reportsKey(keycode::rightControl));
    EXPECT_FALSE(monitors_->reportsKey(keycode::function));
}

TEST_F(X11KeyMonitorTest, FollowsEscapeMovedToCapsLock) {
    setLayout("us -option caps:escape");
    tapKey(66);
    EXPECT_THAT(keys_, ElementsAre(KeyEvent{keycode::escape, 0}));
    EXPECT_THAT(flags_, IsEmpty());
}

TEST_F(X11KeyMonitorTest, DropsAutoRepeat) {
    const auto application = openApplication("editor", "Editor");
    userKey(keyboard_.keyForSymbol(XKB_KEY_a).value(), KeyStroke::Direction::down);
    ASSERT_TRUE(waitFor([&] { return application->count("+a/0") >= 4; }))
        << "the server does not repeat keys";
    EXPECT_THAT(keys_, ElementsAre(KeyEvent{keycode::other, 0}));
    userKey(keyboard_.keyForSymbol(XKB_KEY_a).value(), KeyStroke::Direction::up);
    EXPECT_EQ(keys_.size(), 1U);
}

TEST_F(X11KeyMonitorTest, SeesKeysWhileAnotherProgramHasGrabbedTheKeyboard) {
    const auto application = openApplication("menu", "Menu");
    auto& other = application->connection();
    const auto grab = other.reply(xcb_grab_keyboard_reply,
                                  xcb_grab_keyboard(other.get(), 0, application->window(), XCB_CURRENT_TIME,
                                                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    ASSERT_EQ(grab->status, XCB_GRAB_STATUS_SUCCESS);
    tap(keycode::escape);
    EXPECT_THAT(keys_, ElementsAre(KeyEvent{keycode::escape, 0}));
}

TEST_F(X11KeyMonitorTest, OwnWindowsAreLocal) {
    const auto own = openApplication("dorix", "Dorix", OtherApplication::Belongs::toUs);
    tap(keycode::escape);
    EXPECT_THAT(keys_, IsEmpty());
    EXPECT_THAT(localKeys_, ElementsAre(KeyEvent{keycode::escape, 0}));

    const auto other = openApplication("editor", "Editor");
    tap(keycode::escape);
    EXPECT_EQ(keys_.size(), 1U);
    EXPECT_EQ(localKeys_.size(), 1U);
}

TEST_F(X11KeyMonitorTest, OwnFakedKeysAreNotTheUsers) {
    const auto key = keyboard_.keyFor(keycode::rightOption).value();
    userDown(keycode::rightOption);
    input_.fake({key, KeyStroke::Direction::up});
    input_.fake({key, KeyStroke::Direction::down});
    connection_->flush();
    settle();
    EXPECT_THAT(flags_, ElementsAre(rightOptionDown));
    EXPECT_TRUE(input_.held()[key]);
    userUp(keycode::rightOption);
    EXPECT_THAT(flags_, ElementsAre(rightOptionDown, rightOptionUp));
}

TEST_F(X11KeyMonitorTest, AKeyThatWentUpUnseenIsToldWhenItIsFoundOut) {
    userDown(keycode::rightOption);
    // Hidden from the monitors like everything of our own: the server knows the key up, and they do not.
    input_.fake({keyboard_.keyFor(keycode::rightOption).value(), KeyStroke::Direction::up});
    connection_->flush();
    settle();
    ASSERT_THAT(flags_, ElementsAre(rightOptionDown));
    setLayout("es");
    EXPECT_THAT(flags_, ElementsAre(rightOptionDown, rightOptionUp));
}

TEST_F(X11KeyMonitorTest, AHeldAltOpensNoMenuAndATappedOneDoes) {
    const auto application = openApplication("editor", "Editor");
    EXPECT_THAT(holdFor(*application, keycode::rightOption, 0.35),
                ElementsAre("+Alt_R/0", "+none/8", "-none/8", "-Alt_R/8"));
    EXPECT_THAT(flags_, ElementsAre(rightOptionDown, rightOptionUp));
    EXPECT_THAT(keys_, IsEmpty());
    EXPECT_THAT(holdFor(*application, keycode::rightOption, 0), ElementsAre("+Alt_R/0", "-Alt_R/8"));
    EXPECT_EQ(holdFor(*application, keycode::rightCommand, 0.35).size(), 4U);

    // With another modifier, or with a letter in between, it is no hold of the key alone.
    userDown(keycode::leftShift);
    EXPECT_EQ(holdFor(*application, keycode::rightOption, 0.35).size(), 2U);
    userUp(keycode::leftShift);
    EXPECT_EQ(holdFor(*application, keycode::rightOption, 0.35, keycode::v).size(), 4U);

    isForUs_ = false;
    EXPECT_EQ(holdFor(*application, keycode::rightOption, 0.35).size(), 2U) << "what is not held for us";
}

TEST_F(X11KeyMonitorTest, AltGrIsLeftAlone) {
    EXPECT_FALSE(monitors_->typesCharacters(keycode::rightOption));
    setLayout("es");
    EXPECT_TRUE(monitors_->typesCharacters(keycode::rightOption));
    const auto application = openApplication("editor", "Editor");
    EXPECT_EQ(holdFor(*application, keycode::rightOption, 0.35).size(), 2U);
}

TEST_F(X11KeyMonitorTest, TellsWhenKeysWereStruckHoweverLateTheyAreRead) {
    const auto key = keyboard_.keyFor(keycode::rightOption).value();
    const auto strike = [&](std::uint8_t type) {
        xcb_test_fake_input(user_->get(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
        xcb_flush(user_->get());
    };
    for (int i = 0; i < 2; ++i) {
        times_.clear();
        const double pressed = loop_.main.now();
        strike(XCB_KEY_PRESS);
        ::usleep(120'000);
        strike(XCB_KEY_RELEASE);
        ::usleep(500'000);
        settle();
        ASSERT_EQ(times_.size(), 2U);
        EXPECT_NEAR(times_[0], pressed, 0.05) << "also of the very first event";
        EXPECT_NEAR(times_[1] - times_[0], 0.12, 0.05);
    }
}

TEST_F(X11KeyMonitorTest, AWithheldKeyReachesOnlyTheMonitorsOnceWhateverElseIsHeld) {
    setLayout("us -option caps:escape");
    const auto application = openApplication("editor", "Editor");
    // As a window manager has it.
    auto& manager = application->connection();
    for (const std::uint16_t modifiers :
         {std::uint16_t{XCB_MOD_MASK_1}, std::uint16_t{XCB_MOD_MASK_CONTROL}}) {
        ASSERT_EQ(manager.check(xcb_grab_key_checked(manager.get(), 0, manager.root(), modifiers, 9,
                                                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)),
                  0);
    }
    const auto seenBy = [&](std::uint16_t held, xcb_keycode_t escape) {
        application->forgetKeys();
        keys_.clear();
        flags_.clear();
        userDown(held);
        userKey(escape, KeyStroke::Direction::down);
        userUp(held);
        userKey(escape, KeyStroke::Direction::up);
        EXPECT_TRUE(waitFor([&] { return flags_.size() == 2; })) << "the release of what is held is seen";
        EXPECT_EQ(keys_.size(), 1U);
        tapKey(keyboard_.keyForSymbol(XKB_KEY_a).value());
        EXPECT_TRUE(waitFor([&] { return application->count("-a/0") == 1; }));
        return std::ranges::count_if(application->keys(),
                                     [](const auto& key) { return key.starts_with("+none"); });
    };
    auto token = monitors_->withhold(keycode::escape);
    ASSERT_TRUE(token);
    for (const auto escape : {xcb_keycode_t{9}, xcb_keycode_t{66}}) {
        for (const auto held : {keycode::rightOption, keycode::leftControl, keycode::leftShift})
            EXPECT_EQ(seenBy(held, escape), 0);
    }
    token.reset();
    settle();
    EXPECT_EQ(seenBy(keycode::rightOption, 9), 1);
    EXPECT_EQ(seenBy(keycode::leftShift, 66), 1);
}

TEST_F(X11KeyMonitorTest, AKeyThatOthersHaveIsDoneWithout) {
    const auto application = openApplication("editor", "Editor");
    auto& other = application->connection();
    const std::uint32_t any = XCB_INPUT_MODIFIER_MASK_ANY;
    const std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const auto grab = [&] {
        const auto asked = xcb_input_xi_passive_grab_device(
            other.get(), XCB_CURRENT_TIME, other.root(), XCB_CURSOR_NONE, 9, XCB_INPUT_DEVICE_ALL_MASTER, 1,
            1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
            XCB_INPUT_GRAB_OWNER_NO_OWNER, &events, &any);
        return other.reply(xcb_input_xi_passive_grab_device_reply, asked)->num_modifiers == 0;
    };
    ASSERT_TRUE(grab());
    EXPECT_TRUE(monitors_->withhold(keycode::escape)) << "the other kind of grab";
    settle();
    ASSERT_EQ(other.check(xcb_grab_key_checked(other.get(), 0, other.root(), XCB_MOD_MASK_1, 9,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)),
              0)
        << "nothing was left behind";
    testing::internal::CaptureStderr();
    EXPECT_FALSE(monitors_->withhold(keycode::escape));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("DORIX: another program"));
}

TEST_F(X11KeyMonitorTest, AHoldSurvivesANewLayoutAndAKeyboardThatComesAndGoes) {
    const auto board = boardDevice();
    const auto change = [&](auto what) {
        xcb_input_xi_change_hierarchy(user_->get(), 1,
                                      reinterpret_cast<const xcb_input_hierarchy_change_t*>(&what));
        settle();
    };
    userDown(keycode::rightOption);
    setLayout("es,us -option ctrl:swapcaps");
    change(xcb_input_detach_slave_t{XCB_INPUT_HIERARCHY_CHANGE_TYPE_DETACH_SLAVE, 2, board, {}});
    change(xcb_input_attach_slave_t{XCB_INPUT_HIERARCHY_CHANGE_TYPE_ATTACH_SLAVE, 2, board, coreKeyboard()});
    tapBoardKey(keyboard_.keyForSymbol(XKB_KEY_a).value());
    EXPECT_EQ(keys_.size(), 1U);
    EXPECT_EQ(input_.modifierFlags(), rightOptionDown.modifierFlags);
    EXPECT_THAT(flags_, ElementsAre(rightOptionDown));
    userUp(keycode::rightOption);
    EXPECT_THAT(flags_, ElementsAre(rightOptionDown, rightOptionUp));
}

TEST_F(X11KeyMonitorTest, StartingTakesInWhatIsHeldAndTokensEndTheirMonitor) {
    tokens_.clear();
    tap(keycode::escape);
    EXPECT_THAT(keys_, IsEmpty());

    userDown(keycode::rightOption);
    X11KeyInput late(*connection_, keyboard_);
    EXPECT_EQ(late.modifierFlags(), rightOptionDown.modifierFlags);
    auto token = monitors_->addGlobalMonitor(
        KeyEventMask::flagsChanged, [this](const KeyEvent& event) { flags_.push_back(withoutTime(event)); });
    userUp(keycode::rightOption);
    EXPECT_THAT(flags_, ElementsAre(rightOptionUp));
    monitors_.reset();
    token.reset();
}

}  // namespace
}  // namespace dorix
