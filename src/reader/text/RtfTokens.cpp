#include "reader/text/RtfTokens.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace dorix::reader {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

template <typename Belongs>
std::size_t countWhile(std::string_view text, Belongs belongs) {
    return static_cast<std::size_t>(std::ranges::find_if_not(text, belongs) - text.begin());
}

}  // namespace

std::optional<RtfToken> RtfTokens::next() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of("\r\n"), rest_.size()));
    if (rest_.empty()) return std::nullopt;
    switch (rest_.front()) {
        case '{':
            return RtfToken{RtfToken::Kind::open, take(1), {}};
        case '}':
            return RtfToken{RtfToken::Kind::close, take(1), {}};
        case '\\':
            return control();
        default:
            return text();
    }
}

std::string_view RtfTokens::take(std::size_t count) {
    const auto taken = rest_.substr(0, count);
    rest_.remove_prefix(taken.size());
    return taken;
}

RtfToken RtfTokens::control() {
    take(1);
    if (rest_.empty()) return {RtfToken::Kind::text, {}, {}};
    if (isLetter(rest_.front())) return word();
    if (rest_.front() == '\'') return hexadecimal();
    return {RtfToken::Kind::symbol, take(1), {}};
}

RtfToken RtfTokens::word() {
    RtfToken token{RtfToken::Kind::word, take(countWhile(rest_, isLetter)), {}};
    const bool isNegative = rest_.size() > 1 && rest_.front() == '-' && isDigit(rest_[1]);
    const auto digits = take(countWhile(rest_.substr(isNegative ? 1 : 0), isDigit) + (isNegative ? 1 : 0));
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc()) token.number = number;
    if (rest_.starts_with(' ')) take(1);
    if (token.text == "bin") {
        take(static_cast<std::size_t>(std::max(0, token.number.value_or(0))));
        token.kind = RtfToken::Kind::binary;
    }
    return token;
}

RtfToken RtfTokens::hexadecimal() {
    take(1);
    const auto digits = take(2);
    int byte = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    const bool isWhole = error == std::errc() && end == digits.data() + 2 && byte >= 0;
    if (!isWhole) return {RtfToken::Kind::text, {}, {}};
    return {RtfToken::Kind::byte, digits, byte};
}

RtfToken RtfTokens::text() {
    return {RtfToken::Kind::text, take(std::min(rest_.find_first_of("{}\\\r\n"), rest_.size())), {}};
}

}  // namespace dorix::reader
