#include "adapters/harness/XDesktop.h"
#include "linux/x11/X11Settings.h"

namespace dorix {
namespace {

/// What a settings service keeps on its window: a number, a colour and the theme.
std::string settings(bool bigEndian, const std::string& theme) {
    std::string bytes;
    const auto number = [&](std::size_t value, unsigned size) {
        for (unsigned i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> 8 * (bigEndian ? size - 1 - i : i));
    };
    const auto text = [&](const std::string& value, unsigned sizeOfSize) {
        number(value.size(), sizeOfSize);
        bytes += value + std::string((4 - value.size() % 4) % 4, '\0');
    };
    const auto setting = [&](std::size_t type, const std::string& name) {
        number(type, 1);
        number(0, 1);
        text(name, 2);
        number(7, 4);
    };
    number(bigEndian ? 1 : 0, 1);
    number(0, 3);
    number(3, 4);
    number(3, 4);
    setting(0, "Xft/DPI");
    number(147456, 4);
    setting(2, "Some/Color");
    number(1, 4);
    number(2, 4);
    setting(1, "Net/ThemeName");
    text(theme, 4);
    return bytes;
}

TEST(XSettingsTest, AreReadInEitherOrderOfBytes) {
    const XSettings wanted{{"Xft/DPI", "147456"}, {"Net/ThemeName", "Adwaita-dark"}};
    EXPECT_EQ(parseXSettings(settings(false, "Adwaita-dark")), wanted);
    EXPECT_EQ(parseXSettings(settings(true, "Adwaita-dark")), wanted);
}

TEST(XSettingsTest, WhatIsCutOffOrStrangeIsLeftOut) {
    const auto whole = settings(false, "Arc-Dark");
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
    const auto window = serve(settings(false, "Arc-Dark"));
    EXPECT_TRUE(theme("Arc-Dark"));
    put(window, settings(false, "Arc"));
    EXPECT_TRUE(theme("Arc"));
    xcb_destroy_window(user_->get(), window);
    user_->flush();
    EXPECT_TRUE(theme(""));
    serve(settings(true, "Arc-Dark"));
    EXPECT_TRUE(theme("Arc-Dark"));
}

}  // namespace
}  // namespace dorix
