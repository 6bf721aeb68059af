#pragma once

#include "base/async/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace dorix {

/// A picture: rows from the top without gaps, four bytes a pixel, which are blue, green, red and one that
/// means nothing. Copies share the pixels.
struct ScreenImage {
    int width = 0;
    int height = 0;
    std::shared_ptr<const std::uint8_t> pixels;
};

/// What is on the screen, and pictures of it. Main executor; nothing else waits while the display is asked. A
/// call that is cancelled goes on behind and gives nothing.
class ScreenContent {
 public:
    struct Extent {
        double width = 0;   // points
        double height = 0;  // points
        double pixelsPerPoint = 1;

        bool operator==(const Extent&) const = default;
    };

    struct Window {
        std::uint64_t number = 0;
        std::int32_t ownerProcess = 0;  // 0 for unknown
        int layer = 0;                  // 0 for the windows that people work in, higher for what floats above
        Extent extent;
        bool isShareable = true;  // a picture can be had of it alone

        bool operator==(const Window&) const = default;
    };

    struct Display {
        std::uint64_t number = 0;
        Extent extent;

        bool operator==(const Display&) const = default;
    };

    struct Contents {
        std::vector<Window>
            windows;  // those that are on the screen, front to back, without the desktop's own
        std::vector<Display> displays;  // the chief one first
    };

    struct Pixels {
        int width = 0;
        int height = 0;

        bool operator==(const Pixels&) const = default;
    };

    virtual ~ScreenContent() = default;

    /// As it is now; empty where nothing can be known.
    virtual Task<Contents> contents() = 0;

    /// The window with its own pixels, whatever covers it, scaled to that size. None when it has gone.
    virtual Task<std::optional<ScreenImage>> windowImage(std::uint64_t window, Pixels size) = 0;

    /// The display as it would be without the windows of that process, scaled likewise.
    virtual Task<std::optional<ScreenImage>> displayImage(std::uint64_t display, std::int32_t withoutProcess,
                                                          Pixels size) = 0;
};

/// Where no picture can be had of anything.
class UnavailableScreenContent final : public ScreenContent {
 public:
    Task<Contents> contents() override { co_return Contents(); }
    Task<std::optional<ScreenImage>> windowImage(std::uint64_t, Pixels) override { co_return std::nullopt; }
    Task<std::optional<ScreenImage>> displayImage(std::uint64_t, std::int32_t, Pixels) override {
        co_return std::nullopt;
    }
};

}  // namespace dorix
