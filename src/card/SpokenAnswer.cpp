#include "card/SpokenAnswer.h"

#include "base/text/Text.h"

#include <string_view>

namespace dorix {

namespace {

constexpr double between = 4;              // seconds, in which nobody is interrupted
constexpr std::size_t mostAtOnce = 2'000;  // characters; who wants more of it reads it in the card

/// Where the last sentence or line of the text ends that is whole; 0 for none.
std::size_t lastEnd(std::string_view text) {
    for (std::size_t at = text.size(); at-- > 1;) {
        const char before = text[at - 1];
        if (before == '\n') return at;
        const bool ends = before == '.' || before == '!' || before == '?';
        if (ends && (text[at] == ' ' || text[at] == '\n')) return at;
    }
    return 0;
}

std::string withoutMarks(std::string_view text) {
    std::string plain(text::prefix(text::trim(text), mostAtOnce));
    for (const auto* mark : {"**", "`", "#"}) plain = text::replaceAll(plain, mark, "");
    return plain;
}

}  // namespace

void SpokenAnswer::follow(const AnswerCard& card, const std::string& waiting) {
    const bool isAnother = card.id != id_ || card.answer.size() < position_;
    if (isAnother) begin(card);
    if (card.error) return said.set(*card.error);
    if (!waiting.empty()) return said.set(waiting);
    if (!card.streaming) return say(card, card.answer.size());
    if (executor_.now() - saidAt_ < between) return;
    say(card, position_ + lastEnd(std::string_view(card.answer).substr(position_)));
}

void SpokenAnswer::begin(const AnswerCard& card) {
    id_ = card.id;
    position_ = 0;
    saidAt_ = executor_.now();
}

void SpokenAnswer::say(const AnswerCard& card, std::size_t end) {
    auto text = withoutMarks(std::string_view(card.answer).substr(position_, end - position_));
    position_ = end;
    if (text.empty()) return;
    saidAt_ = executor_.now();
    said.set(std::move(text));
}

}  // namespace dorix
