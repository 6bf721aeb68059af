#include "routing/PatternSet.h"

#include <re2/re2.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace dorix {

namespace {

// What stands for the characters beyond ASCII: patterns are in lower case and without control characters.
constexpr char otherWordCharacter = 'X';
constexpr char otherCharacter = '\x1F';

/// The automaton grows with what is new in the texts, up to this, and then starts anew: far beyond what
/// people's utterances make of it.
constexpr std::int64_t mostMemory = std::int64_t{16} << 20;

RE2::Options options() {
    // Bytes as characters: it is a smaller automaton than one that knows UTF-8, and the text is ASCII.
    RE2::Options options(RE2::Latin1);
    options.set_never_capture(true);
    options.set_dot_nl(true);
    options.set_max_mem(mostMemory);
    options.set_log_errors(false);
    return options;
}

std::string anyOf(std::span<const std::string_view> patterns) {
    std::string any;
    for (const auto pattern : patterns) {
        if (!any.empty()) any += '|';
        any.append("(?:").append(pattern).append(")");
    }
    return any;
}

/// What ICU's \b takes for a part of a word.
bool isWordCharacter(UChar32 c) {
    constexpr auto wordCategories = U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK;
    return u_hasBinaryProperty(c, UCHAR_ALPHABETIC) != 0 || (U_MASK(u_charType(c)) & wordCategories) != 0;
}

bool isAsciiWordCharacter(UChar32 c) {
    return c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// What ICU's \b looks through, as it belongs to the character before.
bool isAttached(UChar32 c) {
    return u_hasBinaryProperty(c, UCHAR_GRAPHEME_EXTEND) != 0 || u_charType(c) == U_FORMAT_CHAR;
}

}  // namespace

PatternSet::PatternSet(std::span<const std::string_view> patterns)
    : any_(std::make_unique<re2::RE2>(anyOf(patterns), options())) {
    if (any_->ok()) return;
    std::fprintf(stderr, "invalid regular expression: %s\n", any_->error().c_str());
    std::abort();
}

PatternSet::~PatternSet() = default;

std::string PatternSet::ascii(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    bool isWord = false;
    const auto* bytes = text.data();
    for (std::size_t at = 0; at < text.size();) {
        UChar32 c = 0;
        U8_NEXT_OR_FFFD(bytes, at, text.size(), c);
        if (c < 0x80) {
            isWord = isAsciiWordCharacter(c);
            out += static_cast<char>(c);
        } else {
            if (!isAttached(c)) isWord = isWordCharacter(c);
            out += isWord ? otherWordCharacter : otherCharacter;
        }
    }
    return out;
}

bool PatternSet::matches(std::string_view ascii) const {
    return RE2::PartialMatch(re2::StringPiece(ascii.data(), ascii.size()), *any_);
}

}  // namespace dorix
