#include "adapters/harness/XDesktop.h"
#include "fakes/TemporaryFolder.h"
#include "linux/x11/X11EventPoster.h"
#include "linux/x11/X11HotKeyRegistrar.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/XcbXkb.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <fstream>
#include <iterator>

namespace dorix {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class X11PasteTest : public XDesktopTest {
 protected:
    void post(std::uint16_t keyCode) {
        result(poster_.postCommandKey(keyCode, [] { return true; }));
        settle();
    }

    /// What an application got for a chord, once it has got that many keys; but for the key that means
    /// nothing, which may be let go late.
    std::vector<std::string> keysOf(OtherApplication& application, std::uint16_t keyCode, std::size_t count) {
        application.forgetKeys();
        post(keyCode);
        std::vector<std::string> keys;
        EXPECT_TRUE(waitFor([&] {
            keys = application.keys();
            std::erase_if(keys, [](const auto& key) { return key.contains("none"); });
            return keys.size() >= count;
        }));
        return keys;
    }

    bool isDownOnServer(std::uint16_t keyCode) {
        const auto key = keyboard_.keyFor(keyCode).value();
        const auto keymap = connection_->reply(xcb_query_keymap_reply, xcb_query_keymap(connection_->get()));
        return (keymap->keys[key / 8] >> (key % 8) & 1U) != 0;
    }

    void offer(const std::string& text) {
        pasteboard_.clearContents();
        pasteboard_.setString(text);
    }

    X11Pasteboard pasteboard_{*connection_};
    X11EventPoster poster_{*connection_, keyboard_, input_, windows_, &pasteboard_};
    std::vector<KeyStroke> userStrokes_;
    Subscription strokes_ =
        input_.listen([this](const KeyStroke& stroke) { userStrokes_.push_back(stroke); });
};

TEST_F(X11PasteTest, PressesWhatTheApplicationInFrontTakesForPaste) {
    {
        const auto editor = openApplication("mousepad", "Mousepad");
        EXPECT_THAT(keysOf(*editor, keycode::v, 4),
                    ElementsAre("+Control_L/0", "+v/4", "-v/4", "-Control_L/4"));
        EXPECT_THAT(keysOf(*editor, keycode::c, 4), Contains("+c/4"));
    }
    {
        const auto terminal = openApplication("xfce4-terminal", "Xfce4-terminal");
        EXPECT_THAT(keysOf(*terminal, keycode::v, 6), Contains("+v/5"));
    }
    // Pastes PRIMARY only; the chord for copying would interrupt its program.
    const auto terminal = openApplication("xterm", "XTerm");
    EXPECT_THAT(keysOf(*terminal, keycode::c, 0), IsEmpty());
    EXPECT_THAT(keysOf(*terminal, keycode::v, 0), IsEmpty()) << "there is nothing of ours to paste";
    offer("x");
    EXPECT_THAT(keysOf(*terminal, keycode::v, 4),
                ElementsAre("+Shift_L/0", "+Insert/1", "-Insert/1", "-Shift_L/1"));
    EXPECT_THAT(userStrokes_, IsEmpty());
}

TEST_F(X11PasteTest, NeedsNoOtherKeysThanThoseOfTheChord) {
    setLayout("us");
    bool changed = false;
    const auto token = keyboard_.onChange([&] { changed = true; });
    const xcb_keycode_t insert = keyboard_.keyForSymbol(XKB_KEY_Insert).value();
    const xcb_keysym_t nothing = XCB_NO_SYMBOL;
    xcb_change_keyboard_mapping(user_->get(), 1, insert, 1, &nothing);
    user_->flush();
    ASSERT_TRUE(waitFor([&] { return changed && !keyboard_.keyForSymbol(XKB_KEY_Insert); }));
    {
        const auto editor = openApplication("mousepad", "Mousepad");
        EXPECT_THAT(keysOf(*editor, keycode::v, 4), Contains("+v/4"));
    }
    const auto terminal = openApplication("xterm", "XTerm");
    testing::internal::CaptureStderr();
    EXPECT_THAT(keysOf(*terminal, keycode::v, 0), IsEmpty());
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("DORIX: the keyboard lacks"));
}

TEST_F(X11PasteTest, HeldModifiersDoNotMixInAndAreHeldAgainAfterwards) {
    setLayout("es");
    const auto editor = openApplication("mousepad", "Mousepad");
    userDown(keycode::rightOption);
    userDown(keycode::leftShift);
    post(keycode::v);
    ASSERT_TRUE(waitFor([&] { return editor->count("+v/4") == 1; }))
        << testing::PrintToString(editor->keys());
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
    X11HotKeyRegistrar registrar(*connection_, keyboard_, input_);
    std::vector<std::uint32_t> kinds;
    registrar.installEventHandler([&](HotKeyID, std::uint32_t kind, double) { kinds.push_back(kind); });
    ASSERT_TRUE(registrar.registerHotKey(keycode::c, hotkeymodifier::option, {1, 1}));
    const auto editor = openApplication("mousepad", "Mousepad");
    userDown(keycode::leftOption);
    userDown(keycode::c);
    post(keycode::v);
    ASSERT_TRUE(waitFor([&] { return editor->count("+v/4") == 1; }))
        << testing::PrintToString(editor->keys());
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
        const OtherProgram editor({"mousepad", "--disable-server"});
        ASSERT_TRUE(
            waitFor([&] { return windows_.processIdentifier(windows_.frontWindow()) == editor.pid(); }));
        const std::string text = "En un lugar de la Mancha";
        // An editor that has just come to the front may not listen yet; more than one paste is no harm here.
        const bool copied = waitFor([&] {
            offer(text);
            post(keycode::v);
            const auto count = pasteboard_.changeCount();
            loop_.runFor(0.2);
            userDown(keycode::leftShift);
            tapKey(keyboard_.keyForSymbol(XKB_KEY_Home).value());
            userUp(keycode::leftShift);
            post(keycode::c);
            return waitFor([&] { return pasteboard_.changeCount() > count; }, 0.3);
        });
        ASSERT_TRUE(copied) << layout;
        EXPECT_THAT(result(pasteboard_.string()).value_or(""), testing::StartsWith(text)) << layout;
    }
}

TEST_F(X11PasteTest, GoesThroughRealTerminalsAndGivesPrimaryUp) {
    const TemporaryFolder folder;
    for (const bool knowsClipboard : {true, false}) {
        const std::string file = folder.path() / (knowsClipboard ? "clipboard" : "primary");
        const std::string command = "cat > " + file;
        const OtherProgram terminal(
            knowsClipboard
                ? std::vector<std::string>{"xfce4-terminal", "--disable-server", "-x", "sh", "-c", command}
                : std::vector<std::string>{"xterm", "-e", "sh", "-c", command});
        ASSERT_TRUE(waitFor([&] {
            const auto shown = windows_.windowClass(windows_.frontWindow()).className;
            return shown == (knowsClipboard ? "Xfce4-terminal" : "XTerm") && std::filesystem::exists(file);
        }));
        offer("mañana a las tres");
        // It may not listen yet; more than one paste is no harm here.
        EXPECT_TRUE(waitFor([&] {
            post(keycode::v);
            tapKey(keyboard_.keyForSymbol(XKB_KEY_Return).value());
            return waitFor([&] { return contentsOf(file).contains("a las tres"); }, 0.5);
        })) << file;
    }
    EXPECT_NE(selectionOwner(*connection_, "PRIMARY"), XCB_WINDOW_NONE);
    offer("");
    EXPECT_TRUE(waitFor([&] { return selectionOwner(*connection_, "PRIMARY") == XCB_WINDOW_NONE; }));
}

TEST_F(X11PasteTest, WhatTheUserHadSelectedCanBePastedAgainAfterwards) {
    const auto terminal = openApplication("xterm", "XTerm");
    const auto contents = [this](const char* selection) {
        return readSelection(loop_, *user_, selection, "UTF8_STRING").value_or(SelectionData{}).bytes;
    };
    OtherProgram select({"xclip", "-i", "-selection", "primary"}, {}, "lo seleccionado");
    ASSERT_TRUE(waitFor([&] { return select.hasEnded(); }));
    // Twice: the second time the selection is kept by us.
    for (int i = 0; i < 2; ++i) {
        offer("dictado");
        EXPECT_EQ(keysOf(*terminal, keycode::v, 4).back(), "-Shift_L/1");
        EXPECT_EQ(contents("PRIMARY"), "dictado");
        offer("dictado");
        EXPECT_TRUE(waitFor([&] { return contents("PRIMARY") == "lo seleccionado"; }));
        EXPECT_EQ(contents("CLIPBOARD"), "dictado");
    }

    // An owner that never answers holds the paste up for a moment only.
    const auto window = takeSelection(*user_, "PRIMARY");
    settle();
    const double start = loop_.main.now();
    offer("otro");
    keysOf(*terminal, keycode::v, 4);
    EXPECT_LT(loop_.main.now() - start, 1);
    EXPECT_EQ(contents("PRIMARY"), "otro");
    xcb_destroy_window(user_->get(), window);
}

}  // namespace
}  // namespace dorix
