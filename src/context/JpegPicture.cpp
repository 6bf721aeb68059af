#include "context/JpegPicture.h"

#include <turbojpeg.h>

#include <memory>

namespace dorix {

namespace {

struct FreePacker {
    void operator()(void* packer) const { tjDestroy(packer); }
};

struct FreeBytes {
    void operator()(unsigned char* bytes) const { tjFree(bytes); }
};

}  // namespace

std::string jpegOf(const ScreenImage& image, double quality) {
    const std::unique_ptr<void, FreePacker> packer(tjInitCompress());
    if (!packer || !image.pixels) return {};
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    // The colours as fine as the rest: small letters are often coloured, and would run.
    const int failed =
        tjCompress2(packer.get(), image.pixels.get(), image.width, 4 * image.width, image.height, TJPF_BGRX,
                    &bytes, &size, TJSAMP_444, static_cast<int>(100 * quality), 0);
    const std::unique_ptr<unsigned char, FreeBytes> owned(bytes);
    if (failed != 0) return {};
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace dorix
