#include "reader/text/CodePage.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <cstdint>

namespace dorix::reader {

namespace {

UConverter* open(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(name.c_str(), &status);
    return U_SUCCESS(status) ? converter : nullptr;
}

UConverter* openCodePage(int number) {
    constexpr int macintosh = 10000;
    constexpr int utf8 = 65001;
    if (number == macintosh) return open("macintosh");
    if (number == utf8) return open("utf-8");
    for (const auto* family : {"windows-", "cp"}) {
        if (auto* const converter = open(family + std::to_string(number))) return converter;
    }
    return open("windows-1252");
}

}  // namespace

void CodePage::Close::operator()(UConverter* converter) const { ucnv_close(converter); }

CodePage::CodePage(int number) : converter_(openCodePage(number)) {}

std::string CodePage::text(std::string_view bytes) const {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString text(bytes.data(), static_cast<std::int32_t>(bytes.size()), converter_.get(),
                                  status);
    std::string utf8;
    if (U_SUCCESS(status)) text.toUTF8String(utf8);
    return utf8;
}

}  // namespace dorix::reader
