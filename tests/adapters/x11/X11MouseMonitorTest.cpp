#include "adapters/harness/XDesktop.h"
#include "linux/x11/X11MouseEventMonitors.h"

#include <xcb/xtest.h>

namespace dorix {
namespace {

class X11MouseMonitorTest : public XDesktopTest {
 protected:
    void click(xcb_window_t window, std::uint8_t button = 1) {
        const auto at = connection_->reply(
            xcb_translate_coordinates_reply,
            xcb_translate_coordinates(connection_->get(), window, connection_->root(), 5, 5));
        fake(XCB_MOTION_NOTIFY, 0, at->dst_x, at->dst_y);
        fake(XCB_BUTTON_PRESS, button);
        fake(XCB_BUTTON_RELEASE, button);
        settle();
    }
    void fake(std::uint8_t type, std::uint8_t detail, std::int16_t x = 0, std::int16_t y = 0) {
        xcb_test_fake_input(user_->get(), type, detail, XCB_CURRENT_TIME, user_->root(), x, y, 0);
        user_->flush();
    }
};

TEST_F(X11MouseMonitorTest, TellsOfPressesInOtherApplicationsOnly) {
    X11MouseEventMonitors monitors(*connection_, windows_);
    int presses = 0;
    auto token = monitors.addGlobalMonitor([&] { ++presses; });
    ASSERT_TRUE(token);
    {
        const auto editor = openApplication("editor", "Editor");
        click(editor->window());
        EXPECT_TRUE(waitFor([&] { return presses == 1; }));
        click(editor->window(), 4);
        click(editor->window(), 5);
        click(editor->window(), 3);
        EXPECT_TRUE(waitFor([&] { return presses == 2; }));

        auto& other = editor->connection();
        const auto popup = openWindow(other, other.root(), true);
        settle();
        click(popup);
        EXPECT_EQ(presses, 2) << "what pops up is no other application";
        const xcb_atom_t dock = other.atom("_NET_WM_WINDOW_TYPE_DOCK");
        xcb_change_property(other.get(), XCB_PROP_MODE_REPLACE, popup, other.atom("_NET_WM_WINDOW_TYPE"),
                            XCB_ATOM_ATOM, 32, 1, &dock);
        other.flush();
        settle();
        click(popup);
        EXPECT_TRUE(waitFor([&] { return presses == 3; })) << "a bar of the desktop's";
    }
    {
        const auto ours = openApplication("dorix", "dorix", OtherApplication::Belongs::toUs);
        click(ours->window());
        EXPECT_EQ(presses, 3);
    }
    click(connection_->root());
    EXPECT_TRUE(waitFor([&] { return presses == 4; })) << "the desktop itself";
    token.reset();
    click(connection_->root());
    EXPECT_EQ(presses, 4);
}

}  // namespace
}  // namespace dorix
