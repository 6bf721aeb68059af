#include "linux/x11/X11Canvas.h"

#include "linux/loop/FileDescriptor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/shm.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace dorix {

namespace {

// What no display is as large as; the server would have to hold it.
constexpr std::size_t mostPixels = std::size_t{1} << 26U;

/// Memory that goes back to the system as soon as nobody uses it: a heap would keep it.
std::shared_ptr<std::uint8_t> mapped(std::size_t size, int file = -1) {
    const int flags = file < 0 ? MAP_PRIVATE | MAP_ANONYMOUS : MAP_SHARED;
    void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, flags, file, 0);
    if (memory == MAP_FAILED) throw X11Visit::Failure("there is no memory for a picture");
    return {static_cast<std::uint8_t*>(memory), [size](void* bytes) { ::munmap(bytes, size); }};
}

/// A file cannot be handed to a server over a network; one that is asked to take it ends the connection.
bool takesFiles(const X11Visit& visit) {
    sockaddr_storage own{};
    socklen_t size = sizeof(own);
    auto* const address = reinterpret_cast<sockaddr*>(&own);
    if (::getsockname(xcb_get_file_descriptor(visit.get()), address, &size) != 0) return false;
    if (own.ss_family != AF_UNIX || !visit.has(xcb_shm_id)) return false;
    const auto version = visit.ask(xcb_shm_query_version_reply, xcb_shm_query_version(visit.get()));
    return version &&
           (version->major_version > 1 || (version->major_version == 1 && version->minor_version >= 2));
}

std::int16_t place(int value) { return static_cast<std::int16_t>(value); }

}  // namespace

/// What the server has written, in memory that both share where that is possible.
class X11Canvas::Bytes {
 public:
    Bytes(const X11Canvas& canvas, std::size_t size) {
        if (!share(canvas, size)) fetch(canvas, size);
    }

    const std::uint8_t* data() const { return shared_ ? shared_.get() : xcb_get_image_data(reply_.get()); }

 private:
    bool share(const X11Canvas& canvas, std::size_t size) {
        const auto& visit = canvas.visit_;
        const FileDescriptor file(takesFiles(visit) ? ::memfd_create("picture", MFD_CLOEXEC) : -1);
        if (!file || ::ftruncate(file.get(), static_cast<off_t>(size)) != 0) return false;
        auto bytes = mapped(size, file.get());
        const auto segment = xcb_generate_id(visit.get());
        // xcb closes the one that it is given.
        xcb_shm_attach_fd(visit.get(), segment, ::fcntl(file.get(), F_DUPFD_CLOEXEC, 0), 0);
        const auto asked = xcb_shm_get_image(
            visit.get(), canvas.pixmap_, 0, 0, static_cast<std::uint16_t>(canvas.size_.width),
            static_cast<std::uint16_t>(canvas.size_.height), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0);
        const auto answer = visit.ask(xcb_shm_get_image_reply, asked);
        if (!answer || answer->size > size) return false;
        shared_ = std::move(bytes);
        return true;
    }

    void fetch(const X11Canvas& canvas, std::size_t size) {
        const auto& visit = canvas.visit_;
        const auto asked = xcb_get_image(visit.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, canvas.pixmap_, 0, 0,
                                         static_cast<std::uint16_t>(canvas.size_.width),
                                         static_cast<std::uint16_t>(canvas.size_.height), ~0U);
        reply_ = visit.demand(xcb_get_image_reply, asked);
        if (std::cmp_less(xcb_get_image_data_length(reply_.get()), size))
            throw X11Visit::Failure("the display gives too little of a picture");
    }

    std::shared_ptr<std::uint8_t> shared_;
    XcbPtr<xcb_get_image_reply_t> reply_;
};

X11Canvas::X11Canvas(const X11Visit& visit, xcb_visualid_t visual, const xcb_rectangle_t& area, Ground ground)
    : visit_(visit),
      format_(visit, visual),
      size_{.width = area.width, .height = area.height},
      pixmap_(xcb_generate_id(visit.get())),
      context_(xcb_generate_id(visit.get())) {
    const auto pixels = std::size_t{area.width} * area.height;
    if (pixels == 0 || pixels > mostPixels)
        throw X11Visit::Failure("the window has no size to be pictured in");
    xcb_create_pixmap(visit.get(), format_.depth(), pixmap_, visit.root(), area.width, area.height);
    const std::array<std::uint32_t, 2> values{ground == Ground::grey ? format_.grey() : 0, 0};
    xcb_create_gc(visit.get(), context_, pixmap_, XCB_GC_FOREGROUND | XCB_GC_GRAPHICS_EXPOSURES,
                  values.data());
    const xcb_rectangle_t whole{.x = 0, .y = 0, .width = area.width, .height = area.height};
    xcb_poly_fill_rectangle(visit.get(), pixmap_, context_, 1, &whole);
}

X11Canvas::~X11Canvas() {
    xcb_free_gc(visit_.get(), context_);
    xcb_free_pixmap(visit_.get(), pixmap_);
}

xcb_void_cookie_t X11Canvas::copy(xcb_drawable_t drawable, const xcb_rectangle_t& from, int x, int y,
                                  Inferiors inferiors) const {
    const std::uint32_t mode = inferiors == Inferiors::shown ? XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS
                                                             : XCB_SUBWINDOW_MODE_CLIP_BY_CHILDREN;
    xcb_change_gc(visit_.get(), context_, XCB_GC_SUBWINDOW_MODE, &mode);
    return xcb_copy_area_checked(visit_.get(), drawable, pixmap_, context_, from.x, from.y, place(x),
                                 place(y), from.width, from.height);
}

ScreenImage X11Canvas::image(ScreenContent::Pixels size) const {
    const Bytes bytes(*this, format_.rowBytes(size_.width) * static_cast<std::size_t>(size_.height));
    const AreaAverage::Size smaller{.width = std::min(size.width, size_.width),
                                    .height = std::min(size.height, size_.height)};
    const auto pixels = mapped(std::size_t{4} * static_cast<std::size_t>(smaller.width) *
                               static_cast<std::size_t>(smaller.height));
    std::vector<std::uint8_t> scratch;
    const auto rows = [&](int row) {
        const auto* bytesOfRow = bytes.data() + format_.rowBytes(size_.width) * static_cast<std::size_t>(row);
        return format_.row(bytesOfRow, size_.width, scratch);
    };
    AreaAverage(size_, smaller).shrink(rows, pixels.get());
    return {.width = smaller.width, .height = smaller.height, .pixels = pixels};
}

}  // namespace dorix
