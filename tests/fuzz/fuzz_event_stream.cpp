#include "cloud/APIError.h"
#include "cloud/EventStreamReader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using namespace dorix;

namespace {

/// All that a reader tells of the bytes, given to it in pieces of `size`.
std::vector<std::string> told(std::string_view bytes, std::size_t size) {
    std::vector<std::string> texts;
    EventStreamReader reader([&](std::string_view text) { texts.emplace_back(text); });
    try {
        for (; bytes.size() > size; bytes.remove_prefix(size)) reader.read(bytes.substr(0, size));
        reader.read(bytes);
        texts.push_back("ended " + reader.finish());
    } catch (const APIError& error) {
        texts.push_back("failed " + error.localizedDescription());
    }
    return texts;
}

}  // namespace

/// Whatever a service sends is read, and read alike wherever its bytes are cut.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (told(bytes, 1 + data[0]) != told(bytes, bytes.size() + 1)) __builtin_trap();
    return 0;
}
