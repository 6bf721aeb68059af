#include "linux/x11/X11ScreenContent.h"

#include "base/Log.h"
#include "base/async/Completion.h"
#include "linux/x11/X11Canvas.h"
#include "linux/x11/X11Composition.h"
#include "linux/x11/X11ScreenWindows.h"
#include "linux/x11/X11Visit.h"

#include <utility>

namespace dorix {

namespace {

/// What `work` makes on a visit to the display; nothing, with a line in the log, when that fails.
template <typename Work>
auto visiting(const std::string& display, Work work)
    -> decltype(std::optional(work(std::declval<X11Visit&>()))) {
    try {
        const X11Visit visit(display);
        return work(visit);
    } catch (const X11Visit::Failure& failure) {
        logLine(std::string("no picture of the screen: ") + failure.what());
        return std::nullopt;
    }
}

xcb_visualid_t visualOf(const X11Visit& visit, xcb_window_t window) {
    return visit.demand(xcb_get_window_attributes_reply, xcb_get_window_attributes(visit.get(), window))
        ->visual;
}

ScreenImage imageOfWindow(const X11Visit& visit, xcb_window_t window, ScreenContent::Pixels size) {
    const auto part = visiblePart(visit, window);
    if (!part) throw X11Visit::Failure("the window has gone");
    const X11Canvas canvas(visit, visualOf(visit, window), *part);
    visit.demand(canvas.copy(window, *part, 0, 0));
    return canvas.image(size);
}

ScreenImage imageOfDisplay(const X11Visit& visit, std::uint64_t display, std::int32_t withoutProcess,
                           ScreenContent::Pixels size) {
    const auto place = placeOfDisplay(visit, display);
    if (!place) throw X11Visit::Failure("the display has gone");
    const X11Canvas canvas(visit, visit.screen().root_visual, *place);
    X11Composition(visit, canvas, *place).addAll(windowsWithout(visit, withoutProcess));
    return canvas.image(size);
}

}  // namespace

Task<ScreenContent::Contents> X11ScreenContent::contents() {
    auto found = co_await runOn(thread_, [display = display_] { return visiting(display, screenContents); });
    co_return std::move(found).value_or(Contents());
}

Task<std::optional<ScreenImage>> X11ScreenContent::windowImage(std::uint64_t window, Pixels size) {
    return runOn(thread_, [=, display = display_] {
        return visiting(display, [&](const X11Visit& visit) {
            return imageOfWindow(visit, static_cast<xcb_window_t>(window), size);
        });
    });
}

Task<std::optional<ScreenImage>> X11ScreenContent::displayImage(std::uint64_t display,
                                                                std::int32_t withoutProcess, Pixels size) {
    return runOn(thread_, [=, server = display_] {
        return visiting(server, [&](const X11Visit& visit) {
            return imageOfDisplay(visit, display, withoutProcess, size);
        });
    });
}

}  // namespace dorix
