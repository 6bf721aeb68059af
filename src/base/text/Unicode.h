#pragma once

#include <unicode/unistr.h>

#include <cstdint>
#include <string>
#include <string_view>

/// The way between UTF-8 and ICU's strings, for the files of this folder. Bytes that are not UTF-8 become
/// U+FFFD.
namespace dorix::text {

inline icu::UnicodeString toUnicode(std::string_view utf8) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(utf8.data(), static_cast<std::int32_t>(utf8.size())));
}

inline std::string toUtf8(const icu::UnicodeString& text) {
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

}  // namespace dorix::text
