// From the key to the picture of a window of 1920x1080: how long it takes, what memory it leaves behind, and
// whether the microphone opens any later while it is taken. With the sound server of the session,
// on an X server of its own.

#include "adapters/harness/EventLoop.h"
#include "adapters/harness/XServer.h"
#include "context/WindowCapture.h"
#include "fakes/FakeDesktop.h"
#include "linux/pulse/PulseAudioEngine.h"
#include "linux/x11/X11ScreenContent.h"

#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace dorix {
namespace {

constexpr int captures = 200;
constexpr int recordings = 100;
constexpr std::uint16_t width = 1920;
constexpr std::uint16_t height = 1080;

void print(const char* what, std::vector<double> seconds) {
    std::ranges::sort(seconds);
    const auto at = [&](double part) {
        return 1000 * seconds[static_cast<std::size_t>(part * static_cast<double>(seconds.size() - 1))];
    };
    std::printf("%-36s p50 %.1f ms, p95 %.1f ms, worst %.1f ms\n", what, at(0.5), at(0.95), at(1));
}

/// In MiB.
double residentMemory() {
    double all = 0;
    double resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / (1U << 20U);
}

/// Fills a server's screen with as much detail as a page of small print has.
class FullWindow {
 public:
    explicit FullWindow(const std::string& name) : display_(xcb_connect(name.c_str(), nullptr)) {
        const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(display_)).data;
        number_ = xcb_generate_id(display_);
        const auto tile = paint(*screen);
        xcb_create_window(display_, XCB_COPY_FROM_PARENT, number_, screen->root, 0, 0, width, height, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP, &tile);
        xcb_map_window(display_, number_);
        settle();
    }
    ~FullWindow() { xcb_disconnect(display_); }
    FullWindow(const FullWindow&) = delete;
    FullWindow& operator=(const FullWindow&) = delete;

 private:
    xcb_pixmap_t paint(const xcb_screen_t& screen) {
        const auto tile = xcb_generate_id(display_);
        xcb_create_pixmap(display_, screen.root_depth, tile, screen.root, width, height);
        const auto context = xcb_generate_id(display_);
        xcb_create_gc(display_, context, tile, XCB_GC_FOREGROUND, &screen.white_pixel);
        const xcb_rectangle_t whole{.x = 0, .y = 0, .width = width, .height = height};
        xcb_poly_fill_rectangle(display_, tile, context, 1, &whole);
        xcb_change_gc(display_, context, XCB_GC_FOREGROUND, &screen.black_pixel);
        std::minstd_rand random(1);
        std::vector<xcb_rectangle_t> strokes;
        for (int line = 10; line < height; line += 18) {
            for (int x = 10; x < width; x += static_cast<int>(3 + random() % 4)) {
                strokes.push_back({.x = static_cast<std::int16_t>(x),
                                   .y = static_cast<std::int16_t>(line + static_cast<int>(random() % 4)),
                                   .width = static_cast<std::uint16_t>(1 + random() % 3),
                                   .height = static_cast<std::uint16_t>(1 + random() % 8)});
            }
        }
        xcb_poly_fill_rectangle(display_, tile, context, static_cast<std::uint32_t>(strokes.size()),
                                strokes.data());
        return tile;
    }
    void settle() { std::free(xcb_get_input_focus_reply(display_, xcb_get_input_focus(display_), nullptr)); }

    xcb_connection_t* const display_;
    xcb_window_t number_ = XCB_WINDOW_NONE;
};

/// The program's part in it, on one main loop.
struct Desktop {
    EventLoop loop;
    const XServer server{"1920x1080x24"};
    const FullWindow window{server.display()};
    X11ScreenContent screen{server.display()};
    SerialExecutor worker;
    FakePrivacyGrants grants;
    UnavailableHelperProcesses helpers;
    WindowCapture capture{{.executor = loop.main,
                           .worker = worker,
                           .grants = grants,
                           .screen = screen,
                           .helpers = helpers,
                           .ownProcess = 0,
                           .languages = [] { return std::vector<std::string>(); }}};
    RunningApplication front{.processIdentifier = ::getpid()};
    PulseAudioEngineFactory audio{loop.main};

    std::size_t take() { return loop.result(capture.capture(front)).jpeg.size(); }

    /// To the first buffer, from when a recording begins.
    double record(bool isPictured) {
        std::atomic<double> heardAt = 0;
        TaskScope tasks(loop.main);
        const double start = loop.main.now();
        const auto engine = audio.makeEngine();
        engine->installTap(1024, engine->inputFormat(), [&](const AudioBuffer&) {
            if (heardAt == 0) heardAt = loop.main.now();
        });
        engine->start();
        if (isPictured) tasks.spawn(capture.capture(front));
        loop.runUntil([&] { return heardAt != 0; }, 5);
        engine->stop();
        loop.runFor(0.1);
        return heardAt - start;
    }
};

void measurePictures(Desktop& desktop) {
    std::size_t bytes = 0;
    for (int i = 0; i < 3; ++i) bytes = desktop.take();
    const double before = residentMemory();
    std::vector<double> seconds;
    for (int i = 0; i < captures; ++i) {
        const double start = desktop.loop.main.now();
        desktop.take();
        seconds.push_back(desktop.loop.main.now() - start);
        desktop.loop.runFor(0.02);
    }
    print("to the picture", seconds);
    std::printf("a picture has %zu bytes; memory before %.1f MiB, after %d pictures %.1f MiB\n", bytes,
                before, captures, residentMemory());
}

void measureSound(Desktop& desktop) {
    const auto hasMicrophone = [&] { return desktop.audio.makeEngine()->inputFormat().channelCount > 0; };
    if (!desktop.loop.runUntil(hasMicrophone, 10)) return void(std::puts("there is no microphone"));
    std::vector<double> alone;
    std::vector<double> pictured;
    for (int i = 0; i < recordings; ++i) {
        alone.push_back(desktop.record(false));
        pictured.push_back(desktop.record(true));
    }
    print("to the first buffer", alone);
    print("the same with a picture", pictured);
}

}  // namespace
}  // namespace dorix

int main() {
    dorix::Desktop desktop;
    dorix::measurePictures(desktop);
    dorix::measureSound(desktop);
}
