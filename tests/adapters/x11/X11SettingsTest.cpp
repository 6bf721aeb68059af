#include "adapters/harness/XDesktop.h"
#include "linux/x11/X11Settings.h"

namespace dorix {
namespace {

using namespace std::string_literals;

/// What a settings service keeps on its window: the order of bytes, a serial number, how many settings there
/// are; a number, a colour and the theme.
std::string settings(const std::string& theme) {
    return "\0\0\0\0\3\0\0\0\3\0\0\0"
           "\0\0\7\0Xft/DPI\0\7\0\0\0\0\100\2\0"
           "\2\0\12\0Some/Color\0\0\7\0\0\0\1\0\0\0\2\0\0\0"
           "\1\0\15\0Net/ThemeName\0\0\0\7\0\0\0"s +
           static_cast<char>(theme.size()) + "\0\0\0"s + theme +
           std::string((4 - theme.size() % 4) % 4, '\0');
}

TEST(XSettingsTest, AreReadInEitherOrderOfBytes) {
    const XSettings wanted{{"Xft/DPI", "147456"}, {"Net/ThemeName", "Adwaita-dark"}};
    EXPECT_EQ(parseXSettings(settings("Adwaita-dark")), wanted);
    EXPECT_EQ(parseXSettings("\1\0\0\0\0\0\0\3\0\0\0\3"
                             "\0\0\0\7Xft/DPI\0\0\0\0\7\0\2\100\0"
                             "\2\0\0\12Some/Color\0\0\0\0\0\7\0\0\0\1\0\0\0\2"
                             "\1\0\0\15Net/ThemeName\0\0\0\0\0\0\7\0\0\0\14Adwaita-dark"s),
              wanted);
}

TEST(XSettingsTest, WhatIsCutOffOrStrangeIsLeftOut) {
    const auto whole = settings("Arc-Dark");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto read = parseXSettings(whole.substr(0, size));
        EXPECT_FALSE(read.contains("Net/ThemeName")) << size;
    }
    auto strange = whole;
    strange[12] = 9;  // the first one's type
    EXPECT_EQ(parseXSettings(strange), XSettings{});
    auto many = whole;
    many[8] = '\xFF';  // how many there are
    EXPECT_EQ(parseXSettings(many).size(), 2U);
}

class X11SettingsTest : public XDesktopTest {
 protected:
    /// Takes the place of the display's settings service.
    xcb_window_t serve(const std::string& bytes) {
        const auto window = takeSelection(*user_, "_XSETTINGS_S0");
        put(window, bytes);
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = user_->root();
        message.type = user_->atom("MANAGER");
        message.data.data32[1] = user_->atom("_XSETTINGS_S0");
        message.data.data32[2] = window;
        xcb_send_event(user_->get(), 0, user_->root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        user_->flush();
        return window;
    }
    void put(xcb_window_t window, const std::string& bytes) {
        setProperty(*user_, window, "_XSETTINGS_SETTINGS", "_XSETTINGS_SETTINGS", bytes);
    }
};

TEST_F(X11SettingsTest, FollowAServiceThatComesChangesAndGoes) {
    std::optional<XSettings> now;
    const X11Settings watch(*connection_, [&](const XSettings& settings) { now = settings; });
    EXPECT_EQ(now, XSettings{});
    const auto theme = [&](const std::string& wanted) {
        return waitFor([&] {
            const auto found = now->find("Net/ThemeName");
            return (found == now->end() ? "" : found->second) == wanted;
        });
    };
    const auto window = serve(settings("Arc-Dark"));
    EXPECT_TRUE(theme("Arc-Dark"));
    put(window, settings("Arc"));
    EXPECT_TRUE(theme("Arc"));
    xcb_destroy_window(user_->get(), window);
    user_->flush();
    EXPECT_TRUE(theme(""));
    serve(settings("Arc-Dark"));
    EXPECT_TRUE(theme("Arc-Dark"));
}

}  // namespace
}  // namespace dorix
