#pragma once

#include "linux/x11/X11Visit.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace dorix {

/// How the pixels of a window are written, and how they are read: those of 16, 24 and 32 bits with a range of
/// bits for each colour. What they tell of translucency is left out. Any thread.
class X11PixelFormat {
 public:
    /// Of windows with that visual. Throws X11Visit::Failure for one whose pixels are no colours themselves,
    /// or cannot be read.
    X11PixelFormat(const X11Visit& visit, xcb_visualid_t visual);

    std::uint8_t depth() const { return depth_; }
    /// Of a row of the server's, gaps included; bytes.
    std::size_t rowBytes(int width) const;
    /// A pixel of the middle grey.
    std::uint32_t grey() const;

    /// A row as blue, green, red and one more byte: where it lies, or else made in `scratch`.
    const std::uint8_t* row(const std::uint8_t* bytes, int width, std::vector<std::uint8_t>& scratch) const;

 private:
    /// The bits of a colour.
    struct Channel {
        std::uint32_t mask = 0;
        int shift = 0;
        std::uint32_t largest = 0;
    };

    void findVisual(const X11Visit& visit, xcb_visualid_t visual);
    void findLayout(const X11Visit& visit);
    void setChannels(const std::array<std::uint32_t, 3>& masks);

    std::uint8_t depth_ = 0;
    std::size_t pixelBytes_ = 0;
    std::size_t rowUnit_ = 4;            // bytes, of which a row has a whole number
    std::array<Channel, 3> channels_{};  // blue, green, red
    bool isPlain_ = false;               // a row lies there as it is wanted
};

}  // namespace dorix
