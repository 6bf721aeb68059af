// Documents come from anybody: any XML, or none, gives bounded text or nothing.
#include "reader/text/OfficeText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace dorix::reader;
    constexpr std::size_t mostBytes = 10'000;
    const std::string xml(reinterpret_cast<const char*>(data), size);
    for (const auto read : {docxText, odtText}) {
        const auto text = read(xml, mostBytes);
        // One piece more than what is enough; a counted blank makes a thousand of a few bytes.
        if (text && text->size() > mostBytes + 4 * size + 1000) std::abort();
    }
    return 0;
}
