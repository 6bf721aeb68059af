#include "recognition/Frames.h"
#include "recognition/ModelRequest.h"
#include "recognition/UnpackOrder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// What the other side of the recogniser's socket may send: any bytes, in pieces as long as the first byte
/// says.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace dorix;
    if (size == 0) return 0;
    const std::size_t piece = data[0] + 1U;
    std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    modelRequestIn(bytes);
    unpackOrderIn(bytes);
    FrameReader reader;
    while (!bytes.empty()) {
        reader.take(bytes.substr(0, piece));
        bytes.remove_prefix(std::min(piece, bytes.size()));
        while (const auto frame = reader.next()) {
            samplesIn(frame->body);
            countIn(frame->body);
            // What was read is what is sent.
            FrameReader again;
            again.take(encoded(*frame));
            if (again.next() != frame) __builtin_trap();
        }
    }
    return 0;
}
