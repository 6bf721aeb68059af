#include "service/ai/writing/Dictation.h"

#include "base/text/Text.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <array>

namespace dorix::service {

namespace {

constexpr auto openings = std::to_array<std::string_view>({"¿", "¡", "«", "“", "(", "[", "\""});
constexpr auto closings =
    std::to_array<std::string_view>({",", ".", ";", ":", "!", "?", "…", ")", "]", "»", "”", "\""});

/// Takes one mark off the front, or off the end.
template <typename Marks>
std::string_view frontMark(std::string_view word, const Marks& marks) {
    const auto mark = std::ranges::find_if(marks, [&](const auto each) { return word.starts_with(each); });
    return mark == marks.end() ? std::string_view() : *mark;
}

template <typename Marks>
std::string_view backMark(std::string_view word, const Marks& marks) {
    const auto mark = std::ranges::find_if(marks, [&](const auto each) { return word.ends_with(each); });
    return mark == marks.end() ? std::string_view() : *mark;
}

Token tokenOf(std::string_view word) {
    std::size_t start = 0;
    for (auto mark = frontMark(word, openings); !mark.empty();
         mark = frontMark(word.substr(start), openings)) {
        start += mark.size();
    }
    auto end = word.size();
    while (end > start) {
        const auto mark = backMark(word.substr(start, end - start), closings);
        if (mark.empty()) break;
        end -= mark.size();
    }
    Token token;
    token.opening = word.substr(0, start);
    token.text = word.substr(start, end - start);
    token.closing = word.substr(end);
    token.key = keyOf(token.text);
    return token;
}

/// Marks that stand by themselves belong to the word before them.
bool isLooseClosing(const Token& token) {
    return token.text.empty() && token.opening.empty() &&
           token.closing.find_first_not_of(",.;:!?\xE2\x80\xA6") == std::string::npos;
}

Gap gapOf(std::string_view whiteSpace) {
    const auto lines = std::ranges::count(whiteSpace, '\n');
    return lines == 0 ? Gap::blank : lines == 1 ? Gap::line : Gap::paragraph;
}

std::string_view separator(Gap gap) {
    switch (gap) {
        case Gap::blank:
            return " ";
        case Gap::line:
            return "\n";
        case Gap::paragraph:
            return "\n\n";
    }
    return " ";
}

}  // namespace

std::string keyOf(std::string_view word) { return text::replaceAll(text::fold(word), "’", "'"); }

bool Token::endsSentence() const {
    return closing.find_first_of(".!?") != std::string::npos || closing.find("…") != std::string::npos;
}

Tokens tokensOf(std::string_view transcript) {
    Tokens tokens;
    const char* behind = transcript.data();
    for (const auto word : text::words(transcript)) {
        auto token = tokenOf(word);
        const std::string_view between(behind, static_cast<std::size_t>(word.data() - behind));
        behind = word.data() + word.size();
        if (isLooseClosing(token) && !tokens.empty()) {
            tokens.back().closing += token.closing;
            continue;
        }
        token.gap = tokens.empty() ? Gap::blank : gapOf(between);
        tokens.push_back(std::move(token));
    }
    return tokens;
}

std::string textOf(const Tokens& tokens) {
    std::string out;
    for (const auto& token : tokens) {
        if (!out.empty()) out += separator(token.gap);
        out += token.marker + token.opening + token.text + token.closing;
    }
    return out;
}

bool beginsSentence(const Tokens& tokens, std::size_t at) {
    return at == 0 || tokens[at].gap != Gap::blank || tokens[at - 1].endsSentence();
}

bool isPause(const Token& token) {
    return token.closing == "," || token.closing == "..." || token.closing == "…";
}

bool isAbbreviation(const Token& token) {
    return token.closing == "." && words::abbreviations().contains(token.key);
}

bool isPhraseAt(const Tokens& tokens, std::size_t at, std::string_view phrase) {
    while (at < tokens.size()) {
        const auto blank = phrase.find(' ');
        if (tokens[at].key != phrase.substr(0, blank)) return false;
        if (blank == std::string_view::npos) return true;
        if (tokens[at].endsClause()) return false;
        phrase.remove_prefix(blank + 1);
        ++at;
    }
    return false;
}

std::size_t wordsIn(std::string_view phrase) {
    return static_cast<std::size_t>(std::ranges::count(phrase, ' ')) + 1;
}

void handOver(const Token& gone, Token& next) {
    next.gap = std::max(gone.gap, next.gap);
    next.opening.insert(0, gone.opening);
}

}  // namespace dorix::service
