#include "adapters/x11/TestDesktop.h"
#include "linux/x11/X11EventPoster.h"
#include "linux/x11/X11HotKeyRegistrar.h"
#include "linux/x11/X11KeyEventMonitors.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/X11Workspace.h"
#include "platform/KeyCodes.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace dorix::testing {
namespace {

class X11WorkspaceTest : public DesktopTest {
 protected:
    void SetUp() override {
        DesktopTest::SetUp();
        if (connection_) workspace_ = std::make_unique<X11Workspace>(*windows_, entries_);
    }

    DesktopEntries entries_{loop_, {}, {}};
    std::unique_ptr<X11Workspace> workspace_;
};

TEST_F(X11WorkspaceTest, KnowsTheApplicationInFrontByItsClass) {
    const auto browser = openApplication("Navigator", "firefox-esr");
    browser->setProperty("_NET_WM_NAME", "UTF8_STRING", "Año nuevo — Búsqueda");
    browser->connection().reply(xcb_get_input_focus_reply, xcb_get_input_focus(browser->connection().get()));
    const auto app = workspace_->frontmostApplication();
    ASSERT_TRUE(app);
    EXPECT_EQ(app->bundleIdentifier, "org.mozilla.firefox");
    EXPECT_EQ(app->processIdentifier, browser->pid()) << "not what the window tells";
    EXPECT_EQ(app->localizedName, "firefox-esr");
    EXPECT_EQ(workspace_->windowTitle(app->windowNumber), "Año nuevo — Búsqueda");

    const auto unknown = openApplication("frobnicator", "Frobnicator");
    EXPECT_EQ(workspace_->frontmostApplication()->bundleIdentifier, "Frobnicator");

    const auto own = openApplication("x", "Anything", OtherApplication::Belongs::toUs);
    EXPECT_EQ(workspace_->frontmostApplication()->bundleIdentifier, workspace_->ownBundleIdentifier());
}

TEST_F(X11WorkspaceTest, ARealApplicationHasANameAndAProcess) {
    Process editor("mousepad --disable-server");
    std::optional<RunningApplication> app;
    ASSERT_TRUE(waitFor(
        [&] {
            app = workspace_->frontmostApplication();
            return app && app->processIdentifier == editor.pid();
        },
        15));
    EXPECT_EQ(app->bundleIdentifier, "com.apple.TextEdit");
}

TEST_F(X11WorkspaceTest, BringsAWindowBackAndIgnoresOneThatIsGone) {
    auto first = openApplication("first", "First");
    const auto app = workspace_->frontmostApplication();
    const auto second = openApplication("second", "Second");
    workspace_->activate(*app);
    EXPECT_TRUE(waitFor([&] { return windows_->frontWindow() == first->window(); }));

    first.reset();
    ASSERT_TRUE(waitFor([&] { return windows_->frontWindow() != app->windowNumber; }));
    workspace_->activate(*app);
    EXPECT_EQ(workspace_->windowTitle(app->windowNumber), std::nullopt);
    EXPECT_EQ(windows_->windowClass(static_cast<xcb_window_t>(app->windowNumber)), WindowClass{});
    settle();
    EXPECT_FALSE(connection_->isLost());
}

/// A display of the test's own, without a window manager.
class BareDisplayTest : public DesktopTest {
 protected:
    void SetUp() override {
        DesktopTest::SetUp();
        if (!connection_) return;
        const std::string file = ::testing::TempDir() + "dorix-bare-display";
        std::filesystem::remove(file);
        server_ = std::make_unique<Process>("Xvfb -displayfd 1 -maxclients 64 -nolisten tcp -noreset >" +
                                            file + " 2>/dev/null");
        std::string number;
        ASSERT_TRUE(waitFor(
            [&] { return static_cast<bool>(std::getline(std::ifstream(file) >> std::ws, number)); }, 10));
        bare_ = X11Connection::open(loop_, loop_, ":" + number);
        ASSERT_TRUE(bare_);
    }

    xcb_window_t createWindow(xcb_window_t parent) {
        const xcb_window_t window = xcb_generate_id(bare_->get());
        xcb_create_window(bare_->get(), XCB_COPY_FROM_PARENT, window, parent, 0, 0, 50, 50, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_map_window(bare_->get(), window);
        return window;
    }

    std::unique_ptr<Process> server_;
    std::unique_ptr<X11Connection> bare_;
};

TEST_F(BareDisplayTest, WithoutAWindowManagerTheFocusDecides) {
    X11Windows windows(*bare_);
    DesktopEntries entries(loop_, {}, {});
    X11Workspace workspace(windows, entries);
    EXPECT_FALSE(workspace.frontmostApplication());

    const auto top = createWindow(bare_->root());
    const std::string_view windowClass("xterm\0XTerm\0", 12);
    xcb_change_property(bare_->get(), XCB_PROP_MODE_REPLACE, top, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(windowClass.size()), windowClass.data());
    const auto inner = createWindow(top);
    windows.activate(inner);
    const auto app = workspace.frontmostApplication();
    ASSERT_TRUE(app);
    EXPECT_EQ(app->windowNumber, top);
    EXPECT_EQ(app->localizedName, "XTerm");
    // The window tells no process; the server knows whose connection it is.
    EXPECT_EQ(app->processIdentifier, ::getpid());
}

TEST_F(BareDisplayTest, ThePasteboardFollowsOthersAlsoWhenItCannotOwnAnything) {
    std::unique_ptr<X11Pasteboard> crippled;
    const auto other = X11Connection::open(loop_, loop_, bare_->display());
    ASSERT_TRUE(other);
    {
        // As many clients as the server takes.
        std::vector<std::unique_ptr<X11Connection>> crowd;
        while (auto one = X11Connection::open(loop_, loop_, bare_->display()))
            crowd.push_back(std::move(one));
        crippled = std::make_unique<X11Pasteboard>(*bare_);
    }
    crippled->clearContents();
    crippled->setString("nadie lo ve");
    crippled->commit();
    const auto before = crippled->changeCount();
    const auto window = other->createHiddenWindow(XCB_EVENT_MASK_NO_EVENT);
    xcb_set_selection_owner(other->get(), window, other->atom("CLIPBOARD"), XCB_CURRENT_TIME);
    other->flush();
    EXPECT_TRUE(waitFor([&] { return crippled->changeCount() == before + 1; }));
}

TEST_F(BareDisplayTest, TellsThatTheServerWentAwayAndGoesOn) {
    X11Keyboard keyboard(*bare_);
    X11KeyInput input(*bare_, keyboard);
    X11Windows windows(*bare_);
    X11Pasteboard pasteboard(*bare_);
    X11HotKeyRegistrar registrar(*bare_, keyboard, input);
    X11KeyEventMonitors monitors(*bare_, keyboard, input, windows);
    X11EventPoster poster(*bare_, keyboard, input, windows, pasteboard);
    pasteboard.clearContents();
    pasteboard.setString("texto");
    int losses = 0;
    bare_->onLost([&] { ++losses; });
    server_.reset();
    ASSERT_TRUE(waitFor([&] { return losses == 1; }));

    EXPECT_EQ(windows.frontWindow(), xcb_window_t{XCB_WINDOW_NONE});
    EXPECT_FALSE(registrar.registerHotKey(keycode::space, hotkeymodifier::option, {1, 1}));
    EXPECT_EQ(monitors.addGlobalMonitor(KeyEventMask::keyDown, [](const KeyEvent&) {}), nullptr);
    poster.postKeyboardEvent(keycode::v, EventPoster::Direction::down, modifier::command);
    pasteboard.clearContents();
    pasteboard.setData("x", "never/seen");
    EXPECT_FALSE(result(pasteboard.handOver()));
    settle();
    EXPECT_EQ(losses, 1);
}

}  // namespace
}  // namespace dorix::testing
