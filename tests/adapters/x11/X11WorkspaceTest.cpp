#include "adapters/harness/XDesktop.h"
#include "linux/x11/X11Bars.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/X11Workspace.h"

#include <unistd.h>

namespace dorix {
namespace {

class X11WorkspaceTest : public XDesktopTest {
 protected:
    DesktopEntries entries_{loop_.main, {}, {}};
    X11Workspace workspace_{windows_, entries_};
};

TEST_F(X11WorkspaceTest, KnowsTheApplicationInFrontByItsClass) {
    const auto browser = openApplication("Navigator", "firefox-esr");
    setProperty(browser->connection(), browser->window(), "_NET_WM_NAME", "UTF8_STRING",
                "Año nuevo — Búsqueda");
    browser->connection().reply(xcb_get_input_focus_reply, xcb_get_input_focus(browser->connection().get()));
    const auto app = workspace_.frontmostApplication();
    ASSERT_TRUE(app);
    EXPECT_EQ(app->bundleIdentifier, "org.mozilla.firefox");
    EXPECT_EQ(app->processIdentifier, browser->pid()) << "not what the window tells";
    EXPECT_EQ(app->localizedName, "firefox-esr");
    EXPECT_EQ(windows_.title(static_cast<xcb_window_t>(app->windowNumber)), "Año nuevo — Búsqueda");

    const auto unknown = openApplication("frobnicator", "Frobnicator");
    EXPECT_EQ(workspace_.frontmostApplication()->bundleIdentifier, "Frobnicator");

    const auto own = openApplication("x", "Anything", OtherApplication::Belongs::toUs);
    EXPECT_EQ(workspace_.frontmostApplication()->bundleIdentifier, workspace_.ownBundleIdentifier());
}

TEST_F(X11WorkspaceTest, BringsAWindowBackAndIgnoresOneThatIsGone) {
    auto first = openApplication("first", "First");
    const auto app = workspace_.frontmostApplication();
    const auto second = openApplication("second", "Second");
    workspace_.activate(*app);
    EXPECT_TRUE(waitFor([&] { return windows_.frontWindow() == first->window(); }));

    first.reset();
    ASSERT_TRUE(waitFor([&] { return windows_.frontWindow() != app->windowNumber; }));
    workspace_.activate(*app);
    EXPECT_EQ(windows_.title(static_cast<xcb_window_t>(app->windowNumber)), "");
    EXPECT_EQ(windows_.windowClass(static_cast<xcb_window_t>(app->windowNumber)), WindowClass{});
    settle();
    EXPECT_FALSE(connection_->isLost());
}

TEST_F(X11WorkspaceTest, TellsWhenAnotherApplicationComesToTheFront) {
    int activations = 0;
    auto told = workspace_.observeActivations([&] { ++activations; });
    const auto first = openApplication("first", "First");
    EXPECT_TRUE(waitFor([&] { return activations == 1; }));
    auto second = openApplication("second", "Second");
    EXPECT_TRUE(waitFor([&] { return activations == 2; }));
    const auto sibling = openWindow(second->connection(), connection_->root());
    windows_.activate(sibling);
    ASSERT_TRUE(waitFor([&] { return windows_.frontWindow() == sibling; }));
    settle();
    EXPECT_EQ(activations, 2) << "another window of the same one";
    second.reset();
    EXPECT_TRUE(waitFor([&] { return activations == 3; })) << "the first one is back";
    told.reset();
    const auto third = openApplication("third", "Third");
    settle();
    EXPECT_EQ(activations, 3);
}

TEST_F(X11WorkspaceTest, BarsLeaveTheRestOfTheirOwnScreen) {
    const auto reserve = [this](const char* name, std::vector<std::uint32_t> numbers) {
        auto bar = openApplication("bar", "Bar");
        auto& connection = bar->connection();
        xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, bar->window(), connection.atom(name),
                            XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(numbers.size()),
                            numbers.data());
        connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.get()));
        return bar;
    };
    const auto free = [this](WindowSystem::Rectangle screen) {
        return freeOfBars(*connection_, windows_, screen);
    };
    const auto root = windows_.frame(connection_->root()).value();
    const int half = root.width / 2;
    const WindowSystem::Rectangle left{0, 0, half, root.height};
    const WindowSystem::Rectangle right{half, 0, half, root.height};

    const auto below = reserve("_NET_WM_STRUT_PARTIAL",
                               {0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, static_cast<std::uint32_t>(half - 1)});
    const auto beside = reserve("_NET_WM_STRUT", {20, 0, 0, 0});
    EXPECT_EQ(free(left), (WindowSystem::Rectangle{20, 0, half - 20, root.height - 30}));
    EXPECT_EQ(free(right), right);

    const auto broken = reserve("_NET_WM_STRUT", {0, 4'000'000'000, 0, 70'000});
    EXPECT_EQ(free(right), right);
}

/// A display of the test's own, without a window manager.
class BareDisplayTest : public testing::Test {
 protected:
    BareDisplayTest() {
        EXPECT_TRUE(eventually([this] { return server_.output().ends_with('\n'); }));
        const auto number = server_.output();
        bare_ = connectTo(loop_, ":" + number.substr(0, number.size() - 1));
    }

    EventLoop loop_;
    OtherProgram server_{{"Xvfb", "-displayfd", "1", "-maxclients", "64", "-nolisten", "tcp", "-noreset"}};
    std::unique_ptr<X11Connection> bare_;
};

TEST_F(BareDisplayTest, WithoutAWindowManagerTheFocusDecides) {
    X11Windows windows(*bare_);
    DesktopEntries entries(loop_.main, {}, {});
    X11Workspace workspace(windows, entries);
    EXPECT_FALSE(workspace.frontmostApplication());

    const auto top = openWindow(*bare_, bare_->root());
    setProperty(*bare_, top, "WM_CLASS", "STRING", std::string("xterm\0XTerm\0", 12));
    const auto inner = openWindow(*bare_, top);
    windows.activate(inner);
    const auto app = workspace.frontmostApplication();
    ASSERT_TRUE(app);
    EXPECT_EQ(app->windowNumber, top);
    EXPECT_EQ(app->localizedName, "XTerm");
    // The window tells no process; the server knows whose connection it is.
    EXPECT_EQ(app->processIdentifier, ::getpid());
}

TEST_F(BareDisplayTest, ThePasteboardFollowsOthersAlsoWhenItCannotOwnAnything) {
    const auto other = connectTo(loop_, bare_->display());
    std::optional<X11Pasteboard> crippled;
    {
        // As many clients as the server takes.
        std::vector<std::unique_ptr<X11Connection>> crowd;
        while (auto one = X11Connection::open(loop_.main, loop_.main, bare_->display()))
            crowd.push_back(std::move(one));
        crippled.emplace(*bare_);
    }
    crippled->clearContents();
    crippled->setString("nadie lo ve");
    crippled->commit();
    const auto before = crippled->changeCount();
    takeSelection(*other, "CLIPBOARD");
    EXPECT_TRUE(loop_.runUntil([&] { return crippled->changeCount() == before + 1; }));
}

}  // namespace
}  // namespace dorix
