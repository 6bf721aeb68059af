#include "adapters/x11/TestDesktop.h"
#include "linux/x11/X11EventPoster.h"
#include "linux/x11/X11HotKeyRegistrar.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/XcbXkb.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace dorix::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class X11PasteTest : public DesktopTest {
 protected:
    void SetUp() override {
        DesktopTest::SetUp();
        if (!connection_) return;
        pasteboard_ = std::make_unique<X11Pasteboard>(*connection_);
        poster_ =
            std::make_unique<X11EventPoster>(*connection_, *keyboard_, *input_, *windows_, *pasteboard_);
        strokes_ = input_->listen([this](const KeyStroke& stroke) { userStrokes_.push_back(stroke); });
    }

    void post(std::uint16_t keyCode) {
        poster_->postKeyboardEvent(keyCode, EventPoster::Direction::down, modifier::command);
        poster_->postKeyboardEvent(keyCode, EventPoster::Direction::up, modifier::command);
        settle();
    }

    bool isDownOnServer(std::uint16_t keyCode) {
        const auto key = keyboard_->keyFor(keyCode).value();
        const auto keymap = connection_->reply(xcb_query_keymap_reply, xcb_query_keymap(connection_->get()));
        return (keymap->keys[key / 8] >> (key % 8) & 1U) != 0;
    }

    void offer(const std::string& text) {
        pasteboard_->clearContents();
        pasteboard_->setString(text);
    }

    std::unique_ptr<X11Pasteboard> pasteboard_;
    std::unique_ptr<X11EventPoster> poster_;
    std::vector<KeyStroke> userStrokes_;
    X11Connection::Token strokes_;
};

TEST_F(X11PasteTest, PressesWhatTheApplicationInFrontTakesForPaste) {
    {
        const auto editor = openApplication("mousepad", "Mousepad");
        post(keycode::v);
        ASSERT_TRUE(waitFor([&] { return editor->keys().size() == 4; }));
        EXPECT_THAT(editor->keys(), ElementsAre("+Control_L/0", "+v/4", "-v/4", "-Control_L/4"));
        editor->forgetKeys();
        post(keycode::c);
        ASSERT_TRUE(waitFor([&] { return editor->keys().size() == 4; }));
        EXPECT_EQ(editor->count("+c/4"), 1U);
    }
    const auto terminal = openApplication("xfce4-terminal", "Xfce4-terminal");
    post(keycode::v);
    ASSERT_TRUE(waitFor([&] { return terminal->keys().size() == 6; }));
    EXPECT_EQ(terminal->count("+v/5"), 1U);
    EXPECT_THAT(userStrokes_, IsEmpty());
}

TEST_F(X11PasteTest, NeverInterruptsTheProgramInATerminalThatPastesPrimaryOnly) {
    const auto terminal = openApplication("xterm", "XTerm");
    post(keycode::c);
    post(keycode::v);
    ASSERT_TRUE(waitFor([&] { return terminal->keys().size() == 4; }));
    EXPECT_THAT(terminal->keys(), ElementsAre("+Shift_L/0", "+Insert/1", "-Insert/1", "-Shift_L/1"));
}

TEST_F(X11PasteTest, NeedsNoOtherKeysThanThoseOfTheChord) {
    setLayout("us");
    bool changed = false;
    const auto token = keyboard_->onChange([&] { changed = true; });
    const xcb_keycode_t insert = keyboard_->keyForSymbol(XKB_KEY_Insert).value();
    const xcb_keysym_t nothing = XCB_NO_SYMBOL;
    xcb_change_keyboard_mapping(user_->get(), 1, insert, 1, &nothing);
    user_->flush();
    ASSERT_TRUE(waitFor([&] { return changed && !keyboard_->keyForSymbol(XKB_KEY_Insert); }));
    {
        const auto editor = openApplication("mousepad", "Mousepad");
        post(keycode::v);
        EXPECT_TRUE(waitFor([&] { return editor->count("+v/4") == 1; }));
    }
    const auto terminal = openApplication("xterm", "XTerm");
    ::testing::internal::CaptureStderr();
    post(keycode::v);
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::HasSubstr("DORIX: el teclado no tiene"));
    EXPECT_THAT(terminal->keys(), IsEmpty());
}

TEST_F(X11PasteTest, HeldModifiersDoNotMixInAndAreHeldAgainAfterwards) {
    setLayout("es");
    const auto editor = openApplication("mousepad", "Mousepad");
    userDown(keycode::rightOption);
    userDown(keycode::leftShift);
    post(keycode::v);
    ASSERT_TRUE(waitFor([&] { return editor->count("+v/4") == 1; }))
        << ::testing::PrintToString(editor->keys());
    EXPECT_TRUE(isDownOnServer(keycode::rightOption));
    EXPECT_TRUE(isDownOnServer(keycode::leftShift));
    EXPECT_FALSE(isDownOnServer(keycode::leftControl));
    EXPECT_EQ(userStrokes_.size(), 2U);

    userUp(keycode::rightOption);
    userUp(keycode::leftShift);
    settle();
    EXPECT_FALSE(isDownOnServer(keycode::rightOption));
    EXPECT_FALSE(isDownOnServer(keycode::leftShift));
    EXPECT_EQ(userStrokes_.size(), 4U);
}

TEST_F(X11PasteTest, ReachesTheApplicationWhileAHotKeyIsHeld) {
    X11HotKeyRegistrar registrar(*connection_, *keyboard_, *input_);
    std::vector<std::uint32_t> kinds;
    registrar.installEventHandler([&](HotKeyID, std::uint32_t kind) { kinds.push_back(kind); });
    ASSERT_TRUE(registrar.registerHotKey(keycode::c, hotkeymodifier::option, {1, 1}));
    const auto editor = openApplication("mousepad", "Mousepad");
    userDown(keycode::leftOption);
    userDown(keycode::c);
    post(keycode::v);
    ASSERT_TRUE(waitFor([&] { return editor->count("+v/4") == 1; }))
        << ::testing::PrintToString(editor->keys());
    EXPECT_THAT(kinds, ElementsAre(HotKeyRegistrar::eventPressed));
    userUp(keycode::c);
    userUp(keycode::leftOption);
    EXPECT_THAT(kinds, ElementsAre(HotKeyRegistrar::eventPressed, HotKeyRegistrar::eventReleased));
    EXPECT_FALSE(isDownOnServer(keycode::leftOption));
}

TEST_F(X11PasteTest, GoesThroughARealEditorInEveryLayout) {
    for (const char* layout : {"us", "es", "us -variant dvorak", "ru", "ru,us", "us,gr"}) {
        setLayout(layout);
        if (std::string_view(layout) == "us,gr") {
            xcb_xkb_latch_lock_state(connection_->get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, 1, 0, 0, 0);
            settle();
        }
        Process editor("mousepad --disable-server 2>/dev/null");
        ASSERT_TRUE(waitFor(
            [&] { return windows_->processIdentifier(windows_->frontWindow()) == editor.pid(); }, 15));
        const std::string text = "En un lugar de la Mancha";
        // An editor that has just come to the front may not listen yet; more than one paste is no harm here.
        const bool copied = waitFor(
            [&] {
                offer(text);
                post(keycode::v);
                const auto count = pasteboard_->changeCount();
                waitFor([&] { return false; }, 0.2);
                userDown(keycode::leftShift);
                userKey(keyboard_->keyForSymbol(XKB_KEY_Home).value(), KeyStroke::Direction::down);
                userKey(keyboard_->keyForSymbol(XKB_KEY_Home).value(), KeyStroke::Direction::up);
                userUp(keycode::leftShift);
                post(keycode::c);
                return waitFor([&] { return pasteboard_->changeCount() > count; }, 0.3);
            },
            10);
        ASSERT_TRUE(copied) << layout;
        EXPECT_THAT(result(pasteboard_->string()).value_or(""), ::testing::StartsWith(text)) << layout;
    }
}

TEST_F(X11PasteTest, PastesIntoATerminalThatKnowsTheClipboard) {
    const auto file = std::filesystem::temp_directory_path() / ("dorix-term-" + std::to_string(::getpid()));
    Process terminal("xfce4-terminal --disable-server -x sh -c 'cat > " + file.string() + "' 2>/dev/null");
    ASSERT_TRUE(waitFor(
        [&] { return windows_->windowClass(windows_->frontWindow()).className == "Xfce4-terminal"; }, 15));
    ASSERT_TRUE(waitFor([&] { return std::filesystem::exists(file); }));
    offer("a las tres");
    EXPECT_TRUE(waitFor([&] {
        post(keycode::v);
        userKey(keyboard_->keyForSymbol(XKB_KEY_Return).value(), KeyStroke::Direction::down);
        userKey(keyboard_->keyForSymbol(XKB_KEY_Return).value(), KeyStroke::Direction::up);
        return waitFor([&] { return contentsOf(file).find("a las tres") != std::string::npos; }, 0.5);
    }));
    EXPECT_TRUE(waitFor([&] { return contentsOf(file).find("a las tres") != std::string::npos; }));
    std::filesystem::remove(file);
}

TEST_F(X11PasteTest, PastesIntoATerminalEmulatorAndGivesPrimaryUp) {
    const auto file = std::filesystem::temp_directory_path() / ("dorix-paste-" + std::to_string(::getpid()));
    Process terminal("xterm -e sh -c 'cat > " + file.string() + "'");
    ASSERT_TRUE(
        waitFor([&] { return windows_->windowClass(windows_->frontWindow()).className == "XTerm"; }, 10));
    ASSERT_TRUE(waitFor([&] { return std::filesystem::exists(file); }));
    offer("mañana a las tres\n");
    post(keycode::v);
    EXPECT_TRUE(waitFor([&] { return contentsOf(file).find("a las tres") != std::string::npos; }));
    const auto owner = [&] {
        return connection_
            ->reply(xcb_get_selection_owner_reply,
                    xcb_get_selection_owner(connection_->get(), XCB_ATOM_PRIMARY))
            ->owner;
    };
    EXPECT_NE(owner(), XCB_WINDOW_NONE);
    EXPECT_TRUE(waitFor([&] { return owner() == XCB_WINDOW_NONE; }));
    std::filesystem::remove(file);
}

TEST_F(X11PasteTest, WhatTheUserHadSelectedCanBePastedAgainAfterwards) {
    const auto terminal = openApplication("xterm", "XTerm");
    const auto contents = [this](const std::string& arguments) {
        const auto file =
            std::filesystem::temp_directory_path() / ("dorix-primary-" + std::to_string(::getpid()));
        Process xclip("xclip -o " + arguments + " > " + file.string());
        EXPECT_TRUE(waitFor([&] { return xclip.hasEnded(); }));
        return contentsOf(file);
    };
    Process select("xclip -i -selection primary", "lo seleccionado");
    ASSERT_TRUE(waitFor([&] { return select.hasEnded(); }));
    // Twice: the second time the selection is kept by us.
    for (int i = 0; i < 2; ++i) {
        terminal->forgetKeys();
        offer("dictado");
        post(keycode::v);
        ASSERT_TRUE(waitFor([&] { return terminal->keys().size() == 4; }));
        EXPECT_EQ(terminal->keys().back(), "-Shift_L/1");
        EXPECT_EQ(contents("-selection primary"), "dictado");
        EXPECT_TRUE(waitFor([&] { return contents("-selection primary") == "lo seleccionado"; }));
        EXPECT_EQ(contents("-selection clipboard"), "dictado");
    }

    // An owner that never answers holds the paste up for a moment only.
    const auto window = user_->createHiddenWindow(XCB_EVENT_MASK_NO_EVENT);
    xcb_set_selection_owner(user_->get(), window, XCB_ATOM_PRIMARY, XCB_CURRENT_TIME);
    user_->flush();
    settle();
    terminal->forgetKeys();
    const double start = loop_.now();
    offer("otro");
    post(keycode::v);
    EXPECT_TRUE(waitFor([&] { return terminal->keys().size() == 4; }));
    EXPECT_LT(loop_.now() - start, 0.4);
    EXPECT_EQ(contents("-selection primary"), "otro");
    xcb_destroy_window(user_->get(), window);
}

}  // namespace
}  // namespace dorix::testing
