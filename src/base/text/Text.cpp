#include "base/text/Text.h"

#include "base/text/Pieces.h"
#include "base/text/Unicode.h"

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <numeric>

namespace dorix::text {

namespace {

bool isAsciiByte(char c) { return static_cast<unsigned char>(c) < 0x80; }

/// Walks the characters of a text; one break iterator a thread, as making one costs more than using it.
class Characters {
 public:
    explicit Characters(std::string_view text) {
        UErrorCode status = U_ZERO_ERROR;
        utext_ = utext_openUTF8(nullptr, text.data(), static_cast<int64_t>(text.size()), &status);
        iterator().setText(utext_, status);
    }
    ~Characters() { utext_close(utext_); }
    Characters(const Characters&) = delete;
    Characters& operator=(const Characters&) = delete;

    /// The end of the next character, or the end of the text.
    std::size_t next() {
        const int32_t end = iterator().next();
        return end == icu::BreakIterator::DONE ? std::string_view::npos : static_cast<std::size_t>(end);
    }

    /// Where the last character begins; the text is not empty.
    std::size_t lastStart() {
        iterator().last();
        return static_cast<std::size_t>(iterator().previous());
    }

 private:
    static icu::BreakIterator& iterator() {
        thread_local const std::unique_ptr<icu::BreakIterator> instance = [] {
            UErrorCode status = U_ZERO_ERROR;
            return std::unique_ptr<icu::BreakIterator>(
                icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        }();
        return *instance;
    }

    UText* utext_ = nullptr;
};

// A carriage return and line feed are one character, so only texts without it take the fast path.
bool isOneByteACharacter(std::string_view text) {
    return isAscii(text) && text.find('\r') == std::string_view::npos;
}

bool isBlank(UChar32 c) { return c == '\t' || u_charType(c) == U_SPACE_SEPARATOR; }

bool isSpaceOrLineEnd(UChar32 c) {
    return isBlank(c) || (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

bool isAlphanumeric(UChar32 c) {
    return (U_MASK(u_charType(c)) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0;
}

bool isLetter(UChar32 c) { return (U_MASK(u_charType(c)) & (U_GC_L_MASK | U_GC_M_MASK)) != 0; }

/// Splits into the runs of code points that satisfy `belongs`; text that is not UTF-8 does not.
template <typename Belongs>
std::vector<std::string_view> runsOf(std::string_view text, Belongs belongs) {
    std::vector<std::string_view> runs;
    const auto* bytes = text.data();
    const auto size = static_cast<int64_t>(text.size());
    int64_t start = -1;
    for (int64_t at = 0; at < size;) {
        const int64_t before = at;
        UChar32 c = 0;
        U8_NEXT(bytes, at, size, c);
        const bool inside = belongs(c);
        if (inside && start < 0) start = before;
        if (!inside && start >= 0) {
            runs.push_back(
                text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(before - start)));
            start = -1;
        }
    }
    if (start >= 0) runs.push_back(text.substr(static_cast<std::size_t>(start)));
    return runs;
}

template <typename Goes>
std::string_view trimWhere(std::string_view text, Goes goes) {
    const auto* bytes = text.data();
    auto end = static_cast<int32_t>(text.size());
    int32_t start = 0;
    while (start < end) {
        int32_t at = start;
        UChar32 c = 0;
        U8_NEXT(bytes, at, end, c);
        if (!goes(c)) break;
        start = at;
    }
    while (end > start) {
        int32_t at = end;
        UChar32 c = 0;
        U8_PREV(bytes, start, at, c);
        if (!goes(c)) break;
        end = at;
    }
    return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

std::string foldByIcu(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    const auto* decompose = icu::Normalizer2::getNFDInstance(status);
    icu::UnicodeString folded = toUnicode(text);
    folded.foldCase();
    icu::UnicodeString decomposed = decompose->normalize(folded, status);
    icu::UnicodeString kept;
    for (int32_t i = 0; i < decomposed.length();) {
        const UChar32 c = decomposed.char32At(i);
        if (u_charType(c) != U_NON_SPACING_MARK) kept.append(c);
        i += U16_LENGTH(c);
    }
    return toUtf8(icu::Normalizer2::getNFCInstance(status)->normalize(kept, status));
}

/// The folds of a range of characters that join nothing that follows but the marks that folding removes, so
/// that each can be folded by itself.
template <UChar32 first, UChar32 last>
class FoldTable {
 public:
    FoldTable() {
        for (UChar32 c = first; c <= last; ++c) folds_[index(c)] = foldByIcu(toUtf8(icu::UnicodeString(c)));
    }

    const std::string* find(UChar32 c) const { return c < first || c > last ? nullptr : &folds_[index(c)]; }

 private:
    static std::size_t index(UChar32 c) { return static_cast<std::size_t>(c - first); }

    std::array<std::string, last - first + 1> folds_;
};

/// Folds the character at `at` and steps over it, if it is ASCII, a Latin letter or common punctuation.
bool appendFolded(std::string& out, std::string_view text, std::size_t& at) {
    static const FoldTable<0x80, 0x17F> latin;
    static const FoldTable<0x2010, 0x2027> punctuation;
    const char c = text[at];
    if (static_cast<unsigned char>(c) < 0x80) {
        out += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        ++at;
        return true;
    }
    std::size_t end = at;
    UChar32 wide = 0;
    const auto* bytes = text.data();
    U8_NEXT(bytes, end, text.size(), wide);
    const auto* folded = latin.find(wide);
    if (folded == nullptr) folded = punctuation.find(wide);
    if (folded == nullptr) return false;
    out += *folded;
    at = end;
    return true;
}

}  // namespace

bool isAscii(std::string_view text) { return std::ranges::all_of(text, isAsciiByte); }

bool isUtf8(std::string_view text) {
    const auto size = static_cast<int64_t>(text.size());
    for (int64_t at = 0; at < size;) {
        UChar32 character = 0;
        U8_NEXT(text.data(), at, size, character);
        if (character < 0) return false;
    }
    return true;
}

std::size_t length(std::string_view text) {
    if (isOneByteACharacter(text)) return text.size();
    Characters characters(text);
    std::size_t count = 0;
    while (characters.next() != std::string_view::npos) ++count;
    return count;
}

std::vector<std::size_t> characterBounds(std::string_view text) {
    std::vector<std::size_t> bounds;
    if (isOneByteACharacter(text)) {
        bounds.resize(text.size() + 1);
        std::iota(bounds.begin(), bounds.end(), 0);
        return bounds;
    }
    bounds.push_back(0);
    Characters characters(text);
    for (auto end = characters.next(); end != std::string_view::npos; end = characters.next())
        bounds.push_back(end);
    return bounds;
}

std::string_view prefix(std::string_view text, std::size_t count) {
    if (count == 0) return {};
    if (text.size() <= count) return text;  // a character has one byte at least
    // One byte more than asked for: a combining mark after the last ASCII letter belongs to it.
    if (isOneByteACharacter(text.substr(0, count + 1))) return text.substr(0, count);
    Characters characters(text);
    std::size_t end = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t next = characters.next();
        if (next == std::string_view::npos) return text;
        end = next;
    }
    return text.substr(0, end);
}

std::string_view lastCharacter(std::string_view text) {
    if (text.empty()) return {};
    Characters characters(text);
    return text.substr(characters.lastStart());
}

std::string_view trim(std::string_view text) { return trimWhere(text, isSpaceOrLineEnd); }

std::string_view trimBlanks(std::string_view text) { return trimWhere(text, isBlank); }

std::string_view trimAny(std::string_view text, std::string_view set) {
    const auto start = text.find_first_not_of(set);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(set) - start + 1);
}

std::vector<std::string_view> words(std::string_view text) {
    return runsOf(text, [](UChar32 c) { return !isSpaceOrLineEnd(c); });
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (std::size_t end = text.find(separator); end != std::string_view::npos;
         end = text.find(separator, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::vector<std::string_view> letterRuns(std::string_view text) { return runsOf(text, isLetter); }

std::vector<std::string_view> alphanumericRuns(std::string_view text) { return runsOf(text, isAlphanumeric); }

std::string join(const std::vector<std::string_view>& pieces, std::string_view separator) {
    std::string out;
    for (const auto piece : pieces) {
        if (!out.empty()) out += separator;
        out += piece;
    }
    return out;
}

std::string fold(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        if (appendFolded(out, text, at)) continue;
        // Up to the next ASCII character: none joins what stands before it.
        const auto rest = text.substr(at);
        const auto run = std::ranges::find_if(rest, isAsciiByte) - rest.begin();
        out += foldByIcu(rest.substr(0, static_cast<std::size_t>(run)));
        at += static_cast<std::size_t>(run);
    }
    return out;
}

std::string lowercase(std::string_view text) {
    if (!isAscii(text)) return toUtf8(toUnicode(text).toLower(icu::Locale::getRoot()));
    std::string out(text);
    for (auto& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

std::string capitalizeFirst(std::string_view text) {
    const auto first = prefix(text, 1);
    std::string out = toUtf8(toUnicode(first).toUpper(icu::Locale::getRoot()));
    out += text.substr(first.size());
    return out;
}

std::string replaceAll(std::string_view text, std::string_view from, std::string_view to) {
    std::string out;
    std::size_t start = 0;
    for (auto at = text.find(from); at != std::string_view::npos; at = text.find(from, start)) {
        out += text.substr(start, at - start);
        out += to;
        start = at + from.size();
    }
    out += text.substr(start);
    return out;
}

}  // namespace dorix::text
