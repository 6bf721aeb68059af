#include "adapters/harness/XDesktop.h"
#include "linux/x11/X11HotKeyRegistrar.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr HotKeyID dictate{1, 1};
constexpr HotKeyID ask{1, 2};
constexpr auto alt = hotkeymodifier::option;
constexpr auto pressed = HotKeyRegistrar::eventPressed;
constexpr auto released = HotKeyRegistrar::eventReleased;

class X11HotKeyTest : public XDesktopTest {
 protected:
    using Event = std::pair<std::uint32_t, std::uint32_t>;

    X11HotKeyTest() {
        registrar_->installEventHandler(
            [this](HotKeyID id, std::uint32_t kind, double) { events_.emplace_back(id.id, kind); });
    }

    void grabAsOther(std::uint16_t modifiers) {
        settle();
        EXPECT_EQ(user_->check(xcb_grab_key_checked(user_->get(), 0, user_->root(), modifiers, 55,
                                                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)),
                  0);
    }

    std::unique_ptr<X11HotKeyRegistrar> registrar_ =
        std::make_unique<X11HotKeyRegistrar>(*connection_, keyboard_, input_);
    std::vector<Event> events_;
};

TEST_F(X11HotKeyTest, PressesAndReleasesOnceHoweverLongTheKeyIsHeld) {
    ASSERT_TRUE(registrar_->registerHotKey(keycode::v, alt, dictate));
    const auto application = openApplication("editor", "Editor");
    // The registrar's connection gets the repeats as further presses.
    int presses = 0;
    const auto token = connection_->listen(XCB_KEY_PRESS, [&](const auto&) { ++presses; });
    userDown(keycode::leftOption);
    userDown(keycode::v);
    ASSERT_TRUE(waitFor([&] { return presses >= 4; }));
    EXPECT_THAT(events_, ElementsAre(Event{1, pressed}));
    userUp(keycode::v);
    EXPECT_THAT(events_, ElementsAre(Event{1, pressed}, Event{1, released}));
    userUp(keycode::leftOption);
    EXPECT_EQ(events_.size(), 2U);
    ASSERT_TRUE(waitFor([&] { return application->count("-Alt_L/8") == 1; }));
    EXPECT_THAT(application->keys(), ElementsAre("+Alt_L/0", "+none/8", "-none/8", "-Alt_L/8"))
        << "the chord's key is ours, and Alt opens no menu";
}

TEST_F(X11HotKeyTest, ReleasesWhenTheModifierGoesUpFirst) {
    ASSERT_TRUE(registrar_->registerHotKey(keycode::v, alt, dictate));
    userDown(keycode::leftOption);
    userDown(keycode::v);
    userUp(keycode::leftOption);
    EXPECT_THAT(events_, ElementsAre(Event{1, pressed}));
    userUp(keycode::v);
    EXPECT_THAT(events_, ElementsAre(Event{1, pressed}, Event{1, released}));
}

TEST_F(X11HotKeyTest, LocksDoNotMatterAndOtherModifiersDo) {
    ASSERT_TRUE(registrar_->registerHotKey(keycode::v, alt, dictate));
    ASSERT_TRUE(registrar_->registerHotKey(keycode::v, alt | hotkeymodifier::shift, ask));
    for (const xkb_keysym_t lock : {xkb_keysym_t{XKB_KEY_Caps_Lock}, xkb_keysym_t{XKB_KEY_Num_Lock}}) {
        events_.clear();
        tapKey(keyboard_.keyForSymbol(lock).value());
        userDown(keycode::leftOption);
        tapKey(55);
        userDown(keycode::leftShift);
        tapKey(55);
        userUp(keycode::leftShift);
        userUp(keycode::leftOption);
        EXPECT_THAT(events_, ElementsAre(Event{1, pressed}, Event{1, released}, Event{2, pressed},
                                         Event{2, released}));
    }
    tapKey(keyboard_.keyForSymbol(XKB_KEY_Caps_Lock).value());
    tapKey(keyboard_.keyForSymbol(XKB_KEY_Num_Lock).value());

    events_.clear();
    userDown(keycode::leftControl);
    userDown(keycode::leftOption);
    tapKey(55);
    userUp(keycode::leftOption);
    userUp(keycode::leftControl);
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(X11HotKeyTest, AChordThatIsTakenFailsAndNothingIsLeftGrabbed) {
    // Taken only with CapsLock on: most of the combinations succeed first.
    grabAsOther(XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK);
    const auto refused = registrar_->registerHotKey(keycode::v, alt, dictate);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), X11HotKeyRegistrar::badAccess);
    grabAsOther(XCB_MOD_MASK_1);

    const auto first = registrar_->registerHotKey(keycode::v, alt | hotkeymodifier::shift, ask);
    ASSERT_TRUE(first);
    EXPECT_FALSE(registrar_->registerHotKey(keycode::v, alt | hotkeymodifier::shift, dictate));
    registrar_->unregisterHotKey(*first);
    registrar_->unregisterHotKey(*first);
    grabAsOther(XCB_MOD_MASK_1 | XCB_MOD_MASK_SHIFT);

    ASSERT_TRUE(registrar_->registerHotKey(keycode::v, hotkeymodifier::control, ask));
    registrar_.reset();
    settle();
    grabAsOther(XCB_MOD_MASK_CONTROL);
}

TEST_F(X11HotKeyTest, FollowsTheLayout) {
    ASSERT_TRUE(registrar_->registerHotKey(keycode::v, alt, dictate));
    setLayout("us -variant dvorak");
    userDown(keycode::leftOption);
    userKey(60, KeyStroke::Direction::down);
    EXPECT_THAT(events_, ElementsAre(Event{1, pressed}));
    userKey(60, KeyStroke::Direction::up);
    tapKey(55);
    EXPECT_THAT(events_, ElementsAre(Event{1, pressed}, Event{1, released}));
}

}  // namespace
}  // namespace dorix
