#include "context/CursorGap.h"

#include "base/text/Text.h"
#include "platform/Accessibility.h"

#include <algorithm>
#include <array>
#include <span>

namespace dorix {

namespace {

constexpr double budget = 0.05;  // seconds

/// After these a word goes on, or a quotation begins; the last two are blanks as well.
constexpr std::array<std::string_view, 25> openers{"(", "[", "{", "<", "«",  "‹",      "“",     "‘", "„",
                                                   "‚", "¿", "¡", "/", "\\", "@",      "#",     "_", "=",
                                                   "$", "~", "-", "–", "—",  "\u00A0", "\u202F"};

/// These close what is before them, but open what follows a blank.
constexpr std::array<std::string_view, 3> quotes{"\"", "'", "`"};

/// Signs that stand right behind a word.
constexpr std::array<std::string_view, 14> closers{".", ",", ";", ":", "!", "?", "…",
                                                   ")", "]", "}", "»", "”", "’", "%"};

bool isOneOf(std::string_view character, std::span<const std::string_view> list) {
    return std::ranges::find(list, character) != list.end();
}

bool isBlank(std::string_view character) { return text::trim(character).empty(); }

}  // namespace

bool wantsGap(std::string_view before, std::string_view text) {
    const auto last = text::lastCharacter(before);
    const auto first = text::prefix(text, 1);
    if (isBlank(last) || isBlank(first) || isOneOf(last, openers) || isOneOf(first, closers)) return false;
    if (!isOneOf(last, quotes)) return true;
    const auto previous = text::lastCharacter(before.substr(0, before.size() - last.size()));
    return !isBlank(previous) && !isOneOf(previous, openers);
}

std::string gapBefore(std::string_view text, const RunningApplication& app, Accessibility& accessibility) {
    const auto element = accessibility.createApplication(app.processIdentifier, budget);
    const auto focused = element->element("AXFocusedUIElement");
    if (!focused) return "";
    const auto before = (*focused)->string("AXTextBeforeCursor");
    return before && wantsGap(*before, text) ? " " : "";
}

}  // namespace dorix
