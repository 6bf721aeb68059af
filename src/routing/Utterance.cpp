#include "routing/Utterance.h"

#include "base/text/Text.h"
#include "routing/IntentWords.h"
#include "routing/PatternSet.h"

#include <algorithm>

namespace dorix {

namespace {

/// What parts words: white space, line ends and the punctuation that a speech engine sets.
bool isSeparator(std::string_view character) {
    if (character.size() == 1) return std::string_view(" \t\n\v\f\r?!.,;:\"").contains(character);
    return character == "¿" || character == "¡" || character == "«" || character == "»" ||
           text::trim(character).empty();
}

/// The bytes of the character at the start of a text that is UTF-8.
std::size_t characterSize(std::string_view text) {
    std::size_t size = 1;
    while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) ++size;
    return size;
}

/// One blank for every run of separators, none at the ends, and a plain apostrophe for the typographic one.
std::string simplified(std::string_view folded) {
    std::string out;
    out.reserve(folded.size() + 2);  // for the blanks that go around it
    for (std::size_t at = 0; at < folded.size();) {
        const auto character = folded.substr(at, characterSize(folded.substr(at)));
        at += character.size();
        if (!isSeparator(character)) {
            out += character == "’" ? "'" : character;
        } else if (!out.empty() && out.back() != ' ') {
            out += ' ';
        }
    }
    if (out.ends_with(' ')) out.pop_back();
    return out;
}

/// One pass only: a filler that stands before another in the list survives behind it.
std::size_t fillersSize(std::string_view text) {
    std::size_t size = 0;
    for (const auto filler : intentwords::fillerPrefixes()) {
        if (text.substr(size).starts_with(filler)) size += filler.size();
    }
    return size;
}

}  // namespace

Utterance::Utterance(std::string_view transcript, FromText) : text_(simplified(text::fold(transcript))) {
    text_.erase(0, fillersSize(text_));
    text_.insert(text_.begin(), ' ');
    text_ += ' ';
    if (!text::isAscii(text_)) ascii_ = PatternSet::ascii(text_);
    const auto trimmed = text::trim(transcript);
    isPunctuatedAsQuestion_ = trimmed.starts_with("¿") || trimmed.ends_with('?');
}

std::size_t Utterance::wordCount() const {
    if (normalised().empty()) return 0;
    return static_cast<std::size_t>(std::ranges::count(normalised(), ' ')) + 1;
}

}  // namespace dorix
