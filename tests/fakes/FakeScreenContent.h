#pragma once

#include "platform/ScreenContent.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// A screen that the test makes up; its pictures are black.
class FakeScreenContent final : public ScreenContent {
 public:
    Contents there;
    bool gives = true;             // false: there is no picture to be had
    std::vector<std::string> log;  // "window 7 800x600", "display 0 without 42 1280x800"

    Task<Contents> contents() override {
        log.emplace_back("contents");
        co_return there;
    }
    Task<std::optional<ScreenImage>> windowImage(std::uint64_t window, Pixels size) override {
        log.push_back("window " + std::to_string(window) + " " + text(size));
        co_return image(size);
    }
    Task<std::optional<ScreenImage>> displayImage(std::uint64_t display, std::int32_t withoutProcess,
                                                  Pixels size) override {
        log.push_back("display " + std::to_string(display) + " without " + std::to_string(withoutProcess) +
                      " " + text(size));
        co_return image(size);
    }

 private:
    static std::string text(Pixels size) {
        return std::to_string(size.width) + "x" + std::to_string(size.height);
    }
    std::optional<ScreenImage> image(Pixels size) const {
        if (!gives) return std::nullopt;
        const auto bytes = static_cast<std::size_t>(4 * size.width * size.height);
        return ScreenImage{
            .width = size.width,
            .height = size.height,
            .pixels = {new std::uint8_t[bytes](), std::default_delete<const std::uint8_t[]>()}};
    }
};

}  // namespace dorix
