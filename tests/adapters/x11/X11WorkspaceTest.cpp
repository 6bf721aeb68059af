#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "adapters/x11/TestDesktop.h"
#include "linux/x11/X11Workspace.h"

namespace dorix::testing {
namespace {

class X11WorkspaceTest : public DesktopTest {
  protected:
    void SetUp() override {
        DesktopTest::SetUp();
        if (connection_) workspace_ = std::make_unique<X11Workspace>(*windows_, entries_);
    }

    DesktopEntries entries_{{}, {}};
    std::unique_ptr<X11Workspace> workspace_;
};

TEST_F(X11WorkspaceTest, KnowsTheApplicationInFrontByItsClass) {
    const auto browser = openApplication("Navigator", "firefox-esr");
    browser->setProperty("_NET_WM_NAME", "UTF8_STRING", "Año nuevo — Búsqueda");
    browser->connection().reply(xcb_get_input_focus_reply, xcb_get_input_focus(browser->connection().get()));
    const auto app = workspace_->frontmostApplication();
    ASSERT_TRUE(app);
    EXPECT_EQ(app->bundleIdentifier, "org.mozilla.firefox");
    EXPECT_EQ(app->processIdentifier, 1);
    EXPECT_EQ(app->localizedName, "firefox-esr");
    EXPECT_EQ(workspace_->windowTitle(app->windowNumber), "Año nuevo — Búsqueda");

    const auto unknown = openApplication("frobnicator", "Frobnicator");
    EXPECT_EQ(workspace_->frontmostApplication()->bundleIdentifier, "Frobnicator");

    const auto own = openApplication("x", "Anything", static_cast<std::uint32_t>(::getpid()));
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

TEST_F(X11WorkspaceTest, TellsThatTheServerWentAwayAndGoesOn) {
    bool lost = false;
    connection_->onLost([&] { lost = true; });
    const auto window = connection_->createHiddenWindow(XCB_EVENT_MASK_NO_EVENT);
    connection_->reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_->get()));
    // The server cuts the connection of a client that it is told to kill.
    xcb_kill_client(user_->get(), window);
    user_->flush();
    ASSERT_TRUE(waitFor([&] { return lost; }));
    EXPECT_TRUE(connection_->isLost());
    EXPECT_FALSE(workspace_->frontmostApplication());
    EXPECT_EQ(windows_->title(1), "");
}

}  // namespace
}  // namespace dorix::testing
