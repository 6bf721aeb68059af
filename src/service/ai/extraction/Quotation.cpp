#include "service/ai/extraction/Quotation.h"

#include "base/text/Text.h"

#include <initializer_list>

namespace dorix::service {

namespace {

/// What becomes of a character that does not stand for itself.
struct Replaced {
    std::size_t bytes = 0;  // 0 for one that does
    std::string_view by;
};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// C0 and DEL.
bool isControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }

/// Whether an angle bracket before this character would begin HTML or an address.
bool opensTag(char c) { return isLetter(c) || c == '/' || c == '!' || c == '?'; }

/// What Markdown takes for more than text, given a blank that takes the meaning away.
Replaced markupAt(std::string_view text) {
    if (text.starts_with("![")) return {.bytes = 2, .by = "["};
    if (text.starts_with("](")) return {.bytes = 2, .by = "] ("};
    if (text.starts_with("][")) return {.bytes = 2, .by = "] ["};
    if (text.starts_with("]:")) return {.bytes = 2, .by = "] :"};
    if (text.size() > 1 && text[0] == '<' && opensTag(text[1])) return {.bytes = 1, .by = "< "};
    return {};
}

bool beginsWithAny(std::string_view text, std::initializer_list<std::string_view> characters) {
    for (const auto character : characters) {
        if (text.starts_with(character)) return true;
    }
    return false;
}

/// Characters that are not seen and change what is: C1, marks and overrides of the direction, line and
/// paragraph separators, the byte order mark.
Replaced invisibleAt(std::string_view text) {
    if (text[0] == '\xC2' && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0)
        return {.bytes = 2, .by = " "};
    if (beginsWithAny(text, {"\u2028", "\u2029"})) return {.bytes = 3, .by = " "};
    if (beginsWithAny(text, {"\u200B", "\u200E", "\u200F", "\u202A", "\u202B", "\u202C", "\u202D", "\u202E",
                             "\u2066", "\u2067", "\u2068", "\u2069", "\uFEFF"}))
        return {.bytes = 3, .by = ""};
    return {};
}

Replaced unseenAt(std::string_view text) {
    if (isControl(text[0])) return {.bytes = 1, .by = " "};
    return static_cast<unsigned char>(text[0]) < 0x80 ? Replaced{} : invisibleAt(text);
}

template <typename At>
std::string replaced(std::string_view text, At at) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t place = 0; place < text.size();) {
        const Replaced found = at(text.substr(place));
        if (found.bytes == 0) {
            out += text[place++];
            continue;
        }
        // "!![" leaves a mark before the bracket each time.
        while (found.by == "[" && out.ends_with('!')) out.pop_back();
        out += found.by;
        place += found.bytes;
    }
    return out;
}

}  // namespace

std::string plainLine(std::string_view text, std::size_t longest) {
    const auto kept = text::prefix(text, longest);
    // In this order: what is not seen may stand between two marks.
    auto out = replaced(replaced(kept, unseenAt), markupAt);
    if (kept.size() < text.size()) out += "…";
    return out;
}

std::string_view withoutLineMarks(std::string_view line) {
    constexpr std::string_view marks = "#>*+-|•·–—";
    for (auto rest = text::trim(line);; line = rest) {
        const auto blank = rest.find(' ');
        if (blank == std::string_view::npos || blank > 4) return rest;
        if (rest.substr(0, blank).find_first_not_of(marks) != std::string_view::npos) return rest;
        rest = text::trim(rest.substr(blank));
    }
}

}  // namespace dorix::service
