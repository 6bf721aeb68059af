#pragma once

#include "base/async/SerialExecutor.h"
#include "platform/ScreenContent.h"

#include <string>

namespace dorix {

/// The windows of an X display, asked for and fetched on a thread of its own, over a connection for each
/// call: nothing in the program waits for it, and nothing of a picture stays behind.
///
/// The picture of a window is what its application draws into it, without its frame. Where somebody
/// composites, the display keeps all of that apart. Elsewhere it keeps only what can be seen: what others
/// cover, or what is off the screen, is grey, and never what lies above. The picture of a display is put
/// together of its windows from the lowest up, so that below those that are left out there is what the
/// display has of it.
class X11ScreenContent final : public ScreenContent {
 public:
    /// Of `display`, or of $DISPLAY if that is empty.
    explicit X11ScreenContent(std::string display = {}) : display_(std::move(display)) {}

    Task<Contents> contents() override;
    Task<std::optional<ScreenImage>> windowImage(std::uint64_t window, Pixels size) override;
    Task<std::optional<ScreenImage>> displayImage(std::uint64_t display, std::int32_t withoutProcess,
                                                  Pixels size) override;

 private:
    const std::string display_;
    SerialExecutor thread_{SerialExecutor::AtEnd::drop};
};

}  // namespace dorix
