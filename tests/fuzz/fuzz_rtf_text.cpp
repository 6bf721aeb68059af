// Documents come from anybody. Whatever one holds, its text is bounded and valid UTF-8.
#include "base/text/Text.h"
#include "reader/text/PlainText.h"
#include "reader/text/RtfText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace dorix::reader;
    constexpr std::size_t mostBytes = 10'000;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto text = rtfText("{\\rtf1" + std::string(bytes), mostBytes);
    if (text && text->size() > mostBytes + 4 * size + 100) std::abort();
    const auto finished = finishedText(plainText(text.value_or(std::string(bytes))), 100);
    // What is valid stays as it is, but for what was cut off before the first letter.
    const bool hasLetters = finished && !dorix::text::trim(*finished).empty();
    if (hasLetters && finishedText(*finished, 100) != finished) std::abort();
    return 0;
}
