#include "adapters/harness/XDesktop.h"
#include "adapters/harness/XServer.h"
#include "linux/x11/AreaAverage.h"
#include "linux/x11/X11ScreenContent.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <ostream>
#include <random>
#include <thread>

namespace dorix {
namespace {

using testing::ElementsAre;
using Pixels = ScreenContent::Pixels;

struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;

    bool operator==(const Colour&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Colour& colour) {
        return out << colour.red << "," << colour.green << "," << colour.blue;
    }
};

constexpr Colour red{255, 0, 0};
constexpr Colour blue{0, 0, 255};
constexpr Colour green{0, 255, 0};
constexpr Colour grey{128, 128, 128};

Colour at(const std::optional<ScreenImage>& image, int x, int y) {
    if (!image || x >= image->width || y >= image->height) return {-1, -1, -1};
    const auto* pixel = image->pixels.get() + 4 * (y * image->width + x);
    return {pixel[2], pixel[1], pixel[0]};
}

/// A window whose left half is of one colour and its right half of another, which the server itself paints
/// again.
class Painted {
 public:
    enum class Kind { managed, popUp };
    struct Look {
        xcb_rectangle_t place{.x = 0, .y = 0, .width = 400, .height = 200};
        Kind kind = Kind::popUp;
        Colour left = red;
        Colour right = blue;
        OtherApplication::Belongs belongs = OtherApplication::Belongs::toAnother;
        std::string display{};
    };

    Painted(EventLoop& loop, const Look& look) : pid_(::getpid()) {
        const auto open = [&] { connection_ = connectTo(loop, look.display); };
        if (look.belongs == OtherApplication::Belongs::toUs) {
            open();
        } else {
            pid_ = inAnotherProcess(open);
        }
        auto* const display = connection_->get();
        const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(display)).data;
        const auto tile = paint(look, *screen);
        const std::array<std::uint32_t, 2> values{tile, look.kind == Kind::popUp};
        window_ = xcb_generate_id(display);
        xcb_create_window(display, XCB_COPY_FROM_PARENT, window_, connection_->root(), look.place.x,
                          look.place.y, look.place.width, look.place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values.data());
        xcb_map_window(display, window_);
        settle();
    }

    xcb_window_t window() const { return window_; }
    pid_t pid() const { return pid_; }

    void moveTo(int x, int y) {
        const std::array<std::uint32_t, 2> values{static_cast<std::uint32_t>(x),
                                                  static_cast<std::uint32_t>(y)};
        xcb_configure_window(connection_->get(), window_, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                             values.data());
        settle();
    }
    void destroy() {
        xcb_destroy_window(connection_->get(), window_);
        settle();
    }
    /// Asks the window manager for something.
    void tell(const char* what, std::uint32_t value) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window_;
        message.type = connection_->atom(what);
        message.data.data32[0] = value;
        xcb_send_event(connection_->get(), 0, connection_->root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        settle();
    }

 private:
    xcb_pixmap_t paint(const Look& look, const xcb_screen_t& screen) {
        auto* const display = connection_->get();
        const auto tile = xcb_generate_id(display);
        xcb_create_pixmap(display, screen.root_depth, tile, screen.root, look.place.width, look.place.height);
        const auto half = static_cast<std::uint16_t>(look.place.width / 2);
        for (const auto& [colour, x] : {std::pair{look.left, 0}, {look.right, look.place.width / 2}}) {
            const auto asked = xcb_alloc_color(display, screen.default_colormap, value(colour.red),
                                               value(colour.green), value(colour.blue));
            const auto pixel = connection_->reply(xcb_alloc_color_reply, asked)->pixel;
            const auto context = xcb_generate_id(display);
            xcb_create_gc(display, context, tile, XCB_GC_FOREGROUND, &pixel);
            const xcb_rectangle_t part{
                .x = static_cast<std::int16_t>(x), .y = 0, .width = half, .height = look.place.height};
            xcb_poly_fill_rectangle(display, tile, context, 1, &part);
        }
        return tile;
    }
    static std::uint16_t value(int channel) { return static_cast<std::uint16_t>(channel * 257); }

    void settle() { connection_->reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_->get())); }

    pid_t pid_;
    std::unique_ptr<X11Connection> connection_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
};

class X11ScreenContentTest : public XDesktopTest {
 protected:
    std::optional<ScreenImage> picture(const Painted& window, Pixels size = {400, 200}) {
        return result(screen_.windowImage(window.window(), size));
    }

    std::optional<ScreenContent::Window> listed(const Painted& window) {
        const auto contents = result(screen_.contents());
        const auto found =
            std::ranges::find(contents.windows, window.window(), &ScreenContent::Window::number);
        return found == contents.windows.end() ? std::nullopt : std::optional(*found);
    }

    /// Has the desktop composited until the test ends.
    void composite() {
        compositor_.emplace(
            std::vector<std::string>{"picom", "--backend", "xrender", "--config", "/dev/null"});
        ASSERT_TRUE(waitFor([&] { return selectionOwner(*connection_, "_NET_WM_CM_S0") != XCB_NONE; }));
    }

    X11ScreenContent screen_;
    std::optional<OtherProgram> compositor_;
};

TEST_F(X11ScreenContentTest, AWindowsPictureHasItsOwnPixelsAlone) {
    Painted window(loop_, {.place = {.x = 100, .y = 100, .width = 400, .height = 200}});
    EXPECT_EQ(at(picture(window), 10, 10), red);
    EXPECT_EQ(at(picture(window), 390, 190), blue);

    const Painted above(
        loop_, {.place = {.x = 100, .y = 100, .width = 100, .height = 200}, .left = green, .right = green});
    auto image = picture(window);
    EXPECT_EQ(at(image, 99, 10), grey);
    EXPECT_EQ(at(image, 100, 10), red);
    window.moveTo(1280 - 300, 300);
    image = picture(window);
    EXPECT_EQ(at(image, 299, 10), blue);
    EXPECT_EQ(at(image, 300, 10), grey);

    composite();
    EXPECT_TRUE(waitFor([&] { return at(picture(window), 300, 10) == blue; }))
        << at(picture(window), 300, 10);
    window.moveTo(-150, 100);
    ASSERT_TRUE(waitFor([&] { return at(picture(window), 10, 10) == red; }));
    EXPECT_EQ(at(picture(window), 260, 10), blue);
}

TEST_F(X11ScreenContentTest, PicturesAreScaledAndNeverEnlarged) {
    const Painted window(loop_, {});
    const auto small = picture(window, {100, 50});
    ASSERT_TRUE(small);
    EXPECT_EQ(std::pair(small->width, small->height), std::pair(100, 50));
    EXPECT_EQ(at(small, 49, 20), red);
    EXPECT_EQ(at(small, 50, 20), blue);
    const auto large = picture(window, {800, 800});
    EXPECT_EQ(std::pair(large->width, large->height), std::pair(400, 200));
}

TEST_F(X11ScreenContentTest, WindowsThatGoWhileTheyArePicturedGiveNone) {
    Painted gone(loop_, {});
    gone.destroy();
    EXPECT_FALSE(picture(gone));
    std::atomic<bool> goesOn = true;
    std::atomic<xcb_window_t> latest = XCB_WINDOW_NONE;
    std::thread others([&] {
        auto* const display = xcb_connect(nullptr, nullptr);
        const auto root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
        const std::uint32_t popUp = 1;
        while (goesOn) {
            latest = xcb_generate_id(display);
            xcb_create_window(display, XCB_COPY_FROM_PARENT, latest, root, 0, 0, 300, 300, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                              &popUp);
            xcb_map_window(display, latest);
            std::free(xcb_get_input_focus_reply(display, xcb_get_input_focus(display), nullptr));
            std::this_thread::sleep_for(std::chrono::microseconds(300));
            xcb_destroy_window(display, latest);
            xcb_flush(display);
        }
        xcb_disconnect(display);
    });
    int taken = 0;
    for (int i = 0; i < 100; ++i) {
        if (result(screen_.windowImage(latest, {300, 300}))) ++taken;
        EXPECT_FALSE(result(screen_.contents()).displays.empty());
    }
    goesOn = false;
    others.join();
    EXPECT_LT(taken, 100);
}

TEST_F(X11ScreenContentTest, WindowsAreListedFrontToBackWhileTheyAreOnTheScreen) {
    using Kind = Painted::Kind;
    Painted lower(loop_, {.kind = Kind::managed});
    ASSERT_TRUE(waitFor([&] { return listed(lower).has_value(); }));
    Painted upper(loop_, {.place = {.x = 0, .y = 0, .width = 90, .height = 90}, .kind = Kind::managed});
    ASSERT_TRUE(waitFor([&] { return listed(upper).has_value(); }));
    const auto windows = result(screen_.contents()).windows;
    ASSERT_GE(windows.size(), 2U);
    EXPECT_EQ(windows[0], (ScreenContent::Window{
                              .number = upper.window(), .ownerProcess = upper.pid(), .extent = {90, 90, 1}}));
    EXPECT_EQ(windows[1].number, lower.window());
    EXPECT_EQ(windows[1].extent, (ScreenContent::Extent{400, 200, 1}));

    upper.tell("WM_CHANGE_STATE", 3);
    EXPECT_TRUE(waitFor([&] { return !listed(upper).has_value(); }));
    EXPECT_FALSE(picture(upper));
    lower.tell("_NET_WM_DESKTOP", 1);
    EXPECT_TRUE(waitFor([&] { return !listed(lower).has_value(); }));
    EXPECT_FALSE(picture(lower));
}

TEST_F(X11ScreenContentTest, TheShadowThatAWindowDrawsItselfIsNoPartOfIt) {
    const Painted window(loop_, {.place = {.x = 0, .y = 0, .width = 440, .height = 240}});
    const std::array<std::uint32_t, 4> extents{30, 10, 25, 15};
    xcb_change_property(connection_->get(), XCB_PROP_MODE_REPLACE, window.window(),
                        connection_->atom("_GTK_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 32, 4, extents.data());
    settle();
    const auto image = picture(window);
    EXPECT_EQ(std::pair(image->width, image->height), std::pair(400, 200));
    EXPECT_EQ(at(image, 189, 10), red);
    EXPECT_EQ(at(image, 190, 10), blue);
}

TEST_F(X11ScreenContentTest, ADisplayIsPicturedWithoutOurWindows) {
    const Painted below(loop_, {.place = {.x = 0, .y = 0, .width = 1280, .height = 800}});
    const Painted ours(loop_, {.place = {.x = 100, .y = 100, .width = 60, .height = 60},
                               .left = green,
                               .right = green,
                               .belongs = OtherApplication::Belongs::toUs});
    const auto display = result(screen_.contents()).displays.front().number;
    const auto take = [&](std::int32_t without) {
        return result(screen_.displayImage(display, without, {1280, 800}));
    };
    auto image = take(::getpid());
    EXPECT_EQ(at(image, 99, 110), red);
    EXPECT_EQ(at(image, 100, 110), grey);
    EXPECT_EQ(at(image, 1000, 110), blue);
    EXPECT_EQ(at(take(0), 100, 110), green);

    composite();
    EXPECT_TRUE(waitFor([&] { return at(take(::getpid()), 100, 110) == red; }));
    EXPECT_EQ(at(take(0), 100, 110), green);
}

TEST_F(X11ScreenContentTest, WhatIsPutAwayIsNotPicturedThoughItStaysMapped) {
    const XServer server("1280x800x24");
    const auto open = [&](std::int16_t x) {
        return Painted(loop_, {.place = {.x = x, .y = 0, .width = 300, .height = 200},
                               .kind = Painted::Kind::managed,
                               .display = server.display()});
    };
    const auto usual = open(0);
    const auto elsewhere = open(300);
    const auto minimised = open(600);
    const auto above = open(900);
    // A window manager that draws the screen itself.
    const auto manager = connectTo(loop_, server.display());
    const auto set = [&](xcb_window_t window, const char* name, xcb_atom_t type,
                         const std::vector<std::uint32_t>& values) {
        xcb_change_property(manager->get(), XCB_PROP_MODE_REPLACE, window, manager->atom(name), type, 32,
                            static_cast<std::uint32_t>(values.size()), values.data());
    };
    const auto own = takeSelection(*manager, "_NET_WM_CM_S0");
    for (const auto window : {manager->root(), own})
        set(window, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, {own});
    set(manager->root(), "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW,
        {usual.window(), elsewhere.window(), minimised.window(), above.window()});
    set(manager->root(), "_NET_CURRENT_DESKTOP", XCB_ATOM_CARDINAL, {0});
    set(usual.window(), "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {0});
    set(elsewhere.window(), "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {1});
    set(above.window(), "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {0xFFFF'FFFF});
    set(minimised.window(), "_NET_WM_STATE", XCB_ATOM_ATOM, {manager->atom("_NET_WM_STATE_HIDDEN")});
    set(above.window(), "_NET_WM_STATE", XCB_ATOM_ATOM, {manager->atom("_NET_WM_STATE_ABOVE")});
    manager->reply(xcb_get_input_focus_reply, xcb_get_input_focus(manager->get()));

    X11ScreenContent screen(server.display());
    const auto contents = result(screen.contents());
    ASSERT_EQ(contents.windows.size(), 2U);
    EXPECT_EQ(contents.windows[0].number, above.window());
    EXPECT_GT(contents.windows[0].layer, 0);
    EXPECT_EQ(contents.windows[1].number, usual.window());
    EXPECT_EQ(contents.windows[1].layer, 0);
    EXPECT_FALSE(result(screen.windowImage(elsewhere.window(), {300, 200})));
    const auto image = result(screen.displayImage(contents.displays.front().number, 0, {1280, 800}));
    EXPECT_EQ(at(image, 10, 10), red);
    EXPECT_EQ(at(image, 310, 10), grey);
    EXPECT_EQ(at(image, 610, 10), grey);
    EXPECT_EQ(at(image, 910, 10), red);
}

TEST_F(X11ScreenContentTest, TheChiefDisplayIsTheFirst) {
    const XServer server("1280x800x24");
    for (const char* monitor : {"*chief 640/100x800/100+640+0 screen", "other 640/100x800/100+0+0 none"}) {
        OtherProgram xrandr({"sh", "-c", "xrandr -d " + server.display() + " --setmonitor " + monitor});
        EXPECT_EQ(xrandr.wait(), 0);
    }
    X11ScreenContent screen(server.display());
    const Painted window(
        loop_, {.place = {.x = 540, .y = 0, .width = 200, .height = 800}, .display = server.display()});
    const auto contents = result(screen.contents());
    ASSERT_EQ(contents.displays.size(), 2U);
    EXPECT_EQ(contents.displays[0].extent, (ScreenContent::Extent{640, 800, 1}));
    const auto image = result(screen.displayImage(contents.displays[0].number, 0, {640, 800}));
    EXPECT_EQ(at(image, 99, 400), blue);
    EXPECT_NE(at(image, 100, 400), blue);
    // Nobody manages the windows here: what wants no manager floats.
    ASSERT_EQ(contents.windows.size(), 1U);
    EXPECT_GT(contents.windows[0].layer, 0);
}

TEST_F(X11ScreenContentTest, AtTwiceTheResolutionAPointHasTwoPixels) {
    const XServer server("1280x800x24");
    OtherProgram settings({"sh", "-c", "echo 'Xft.dpi:\t192' | xrdb -nocpp -display " + server.display()});
    EXPECT_EQ(settings.wait(), 0);
    X11ScreenContent screen(server.display());
    EXPECT_EQ(result(screen.contents()).displays.front().extent, (ScreenContent::Extent{640, 400, 2}));
}

TEST_F(X11ScreenContentTest, OtherDepthsAreReadOrRefused) {
    for (const char* depth : {"16", "24", "30"}) {
        const XServer server(std::string("640x400x") + depth);
        X11ScreenContent screen(server.display());
        const Painted window(loop_, {.display = server.display()});
        const auto image = result(screen.windowImage(window.window(), {400, 200}));
        EXPECT_EQ(at(image, 10, 10), red) << depth;
        EXPECT_EQ(at(image, 390, 10), blue) << depth;
    }
    const XServer server("640x400x8");
    X11ScreenContent screen(server.display());
    EXPECT_FALSE(
        result(screen.displayImage(result(screen.contents()).displays.front().number, 0, {640, 400})));
    X11ScreenContent none(":4711");
    EXPECT_TRUE(result(none.contents()).displays.empty());
}

/// The mean of the area, in real numbers.
double meanOf(const std::vector<std::uint8_t>& picture, AreaAverage::Size from, AreaAverage::Size to, int x,
              int y, int channel) {
    const double columns = static_cast<double>(from.width) / to.width;
    const double rows = static_cast<double>(from.height) / to.height;
    double sum = 0;
    for (int row = 0; row < from.height; ++row) {
        const double tall = std::min<double>(row + 1, (y + 1) * rows) - std::max<double>(row, y * rows);
        for (int column = 0; tall > 0 && column < from.width; ++column) {
            const double wide =
                std::min<double>(column + 1, (x + 1) * columns) - std::max<double>(column, x * columns);
            const auto index = static_cast<std::size_t>(4 * (row * from.width + column) + channel);
            if (wide > 0) sum += tall * wide * picture[index];
        }
    }
    return sum / (columns * rows);
}

TEST(AreaAverageTest, EachPixelIsTheMeanOfItsArea) {
    std::minstd_rand random(1);
    for (const auto& [from, to] : {std::pair<AreaAverage::Size, AreaAverage::Size>{{97, 61}, {79, 50}},
                                   {{64, 40}, {16, 10}},
                                   {{50, 3}, {7, 1}},
                                   {{13, 7}, {13, 7}},
                                   {{1, 1}, {1, 1}}}) {
        std::vector<std::uint8_t> picture(static_cast<std::size_t>(4 * from.width * from.height));
        std::ranges::generate(picture, [&] { return static_cast<std::uint8_t>(random() % 256); });
        std::vector<std::uint8_t> smaller(static_cast<std::size_t>(4 * to.width * to.height));
        AreaAverage(from, to).shrink(
            [&](int row) { return picture.data() + std::ptrdiff_t{4} * row * from.width; }, smaller.data());
        double worst = 0;
        for (std::size_t i = 0; i < smaller.size(); ++i) {
            const int pixel = static_cast<int>(i / 4);
            const double mean =
                meanOf(picture, from, to, pixel % to.width, pixel / to.width, static_cast<int>(i % 4));
            worst = std::max(worst, std::abs(smaller[i] - mean));
        }
        EXPECT_LT(worst, 2) << from.width << "x" << from.height;
    }
}

}  // namespace
}  // namespace dorix
