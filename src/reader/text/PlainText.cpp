#include "reader/text/PlainText.h"

#include "base/text/Text.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace dorix::reader {

namespace {

std::string fromLatin1(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80) {
            text += byte;
        } else {
            text += static_cast<char>(0xC0U | (code >> 6U));
            text += static_cast<char>(0x80U | (code & 0x3FU));
        }
    }
    return text;
}

/// With U+FFFD where there was none.
std::string asUtf8(std::string text) {
    if (text::isUtf8(text)) return text;
    std::string valid;
    const icu::StringPiece piece(text.data(), static_cast<std::int32_t>(text.size()));
    icu::UnicodeString::fromUTF8(piece).toUTF8String(valid);
    return valid;
}

}  // namespace

std::string plainText(std::string bytes) {
    return text::isUtf8(bytes) ? std::move(bytes) : fromLatin1(bytes);
}

std::optional<std::string> finishedText(std::string text, std::size_t limit) {
    text = asUtf8(std::move(text));
    std::erase(text, '\0');
    if (text::trim(text).empty()) return std::nullopt;
    text.resize(text::prefix(text, limit).size());
    return text;
}

}  // namespace dorix::reader
