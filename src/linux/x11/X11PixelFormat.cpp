#include "linux/x11/X11PixelFormat.h"

#include <bit>
#include <cstring>

namespace dorix {

namespace {

constexpr std::uint32_t brightest = 255;

bool isHostOrder(std::uint8_t order) {
    return (order == XCB_IMAGE_ORDER_LSB_FIRST) == (std::endian::native == std::endian::little);
}

}  // namespace

X11PixelFormat::X11PixelFormat(const X11Visit& visit, xcb_visualid_t visual) {
    findVisual(visit, visual);
    findLayout(visit);
    constexpr std::uint32_t byte = 0xFF;
    isPlain_ = std::endian::native == std::endian::little && pixelBytes_ == 4 && channels_[0].mask == byte &&
               channels_[1].mask == byte << 8U && channels_[2].mask == byte << 16U;
}

void X11PixelFormat::findVisual(const X11Visit& visit, xcb_visualid_t visual) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&visit.screen()); depths.rem > 0;
         xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            const auto& type = *visuals.data;
            if (type.visual_id != visual || type._class < XCB_VISUAL_CLASS_TRUE_COLOR) continue;
            depth_ = depths.data->depth;
            return setChannels({type.blue_mask, type.green_mask, type.red_mask});
        }
    }
    throw X11Visit::Failure("the window's pixels are no colours");
}

void X11PixelFormat::setChannels(const std::array<std::uint32_t, 3>& masks) {
    for (std::size_t i = 0; i < masks.size(); ++i) {
        if (masks[i] == 0) throw X11Visit::Failure("the window's pixels lack a colour");
        const int shift = std::countr_zero(masks[i]);
        channels_[i] = {
            .mask = masks[i], .shift = shift, .largest = masks[i] >> static_cast<unsigned>(shift)};
    }
}

void X11PixelFormat::findLayout(const X11Visit& visit) {
    const auto* setup = xcb_get_setup(visit.get());
    for (auto formats = xcb_setup_pixmap_formats_iterator(setup); formats.rem > 0;
         xcb_format_next(&formats)) {
        if (formats.data->depth != depth_) continue;
        pixelBytes_ = formats.data->bits_per_pixel / 8U;
        rowUnit_ = formats.data->scanline_pad / 8U;
    }
    if (pixelBytes_ < 2 || pixelBytes_ > 4 || rowUnit_ == 0 || !isHostOrder(setup->image_byte_order))
        throw X11Visit::Failure("the window's pixels are written in a way of their own");
}

std::size_t X11PixelFormat::rowBytes(int width) const {
    const auto bytes = static_cast<std::size_t>(width) * pixelBytes_;
    return (bytes + rowUnit_ - 1) / rowUnit_ * rowUnit_;
}

std::uint32_t X11PixelFormat::grey() const {
    std::uint32_t pixel = 0;
    for (const auto& channel : channels_)
        pixel |= (channel.largest / 2 + 1) << static_cast<unsigned>(channel.shift);
    return pixel;
}

const std::uint8_t* X11PixelFormat::row(const std::uint8_t* bytes, int width,
                                        std::vector<std::uint8_t>& scratch) const {
    if (isPlain_) return bytes;
    scratch.resize(static_cast<std::size_t>(width) * 4);
    for (auto* into = scratch.data(); width > 0; --width, bytes += pixelBytes_, into += 4) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, bytes, pixelBytes_);
        for (std::size_t i = 0; i < channels_.size(); ++i) {
            const auto& channel = channels_[i];
            const auto value = (pixel & channel.mask) >> static_cast<unsigned>(channel.shift);
            into[i] = static_cast<std::uint8_t>((value * brightest + channel.largest / 2) / channel.largest);
        }
    }
    return scratch.data();
}

}  // namespace dorix
