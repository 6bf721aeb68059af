#include "adapters/harness/XDesktop.h"
#include "linux/x11/X11KeyEventMonitors.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr KeyEvent rightOptionDown{keycode::rightOption, modifier::option | modifier::deviceRightOption};
constexpr KeyEvent rightOptionUp{keycode::rightOption, 0};

class X11KeyMonitorTest : public XDesktopTest {
 protected:
    X11KeyMonitorTest() {
        const auto record = [](auto& into) {
            return [&into](const KeyEvent& event) { into.push_back(event); };
        };
        tokens_.push_back(monitors_->addGlobalMonitor(KeyEventMask::flagsChanged, record(flags_)));
        tokens_.push_back(monitors_->addGlobalMonitor(KeyEventMask::keyDown, record(keys_)));
        tokens_.push_back(monitors_->addLocalMonitor(KeyEventMask::keyDown, [this](const KeyEvent& event) {
            localKeys_.push_back(event);
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

    std::unique_ptr<X11KeyEventMonitors> monitors_ =
        std::make_unique<X11KeyEventMonitors>(*connection_, keyboard_, input_, windows_);
    std::vector<Subscription> tokens_;
    std::vector<KeyEvent> flags_;
    std::vector<KeyEvent> keys_;
    std::vector<KeyEvent> localKeys_;
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

    tokens_.clear();
    EXPECT_EQ(holdFor(*application, keycode::rightOption, 0.35).size(), 2U) << "nobody monitors";
}

TEST_F(X11KeyMonitorTest, AltGrIsLeftAlone) {
    setLayout("es");
    const auto application = openApplication("editor", "Editor");
    EXPECT_EQ(holdFor(*application, keycode::rightOption, 0.35).size(), 2U);
}

TEST_F(X11KeyMonitorTest, StartingTakesInWhatIsHeldAndTokensEndTheirMonitor) {
    tokens_.clear();
    tap(keycode::escape);
    EXPECT_THAT(keys_, IsEmpty());

    userDown(keycode::rightOption);
    X11KeyInput late(*connection_, keyboard_);
    EXPECT_EQ(late.modifierFlags(), rightOptionDown.modifierFlags);
    auto token = monitors_->addGlobalMonitor(KeyEventMask::flagsChanged,
                                             [this](const KeyEvent& event) { flags_.push_back(event); });
    userUp(keycode::rightOption);
    EXPECT_THAT(flags_, ElementsAre(rightOptionUp));
    monitors_.reset();
    token.reset();
}

}  // namespace
}  // namespace dorix
