#include "service/accounts/Email.h"

#include "base/text/Text.h"

#include <algorithm>

namespace dorix::service {

namespace {

constexpr std::size_t longest = 254;

bool isOfLocalPart(char character) {
    constexpr std::string_view others = "!#$%&'*+-/=?^_`{|}~.";
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') ||
           others.find(character) != std::string_view::npos;
}

bool isOfDomain(char character) {
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') ||
           character == '-' || character == '.';
}

bool isDotted(std::string_view text) {
    return !text.empty() && !text.starts_with('.') && !text.ends_with('.') &&
           text.find("..") == std::string_view::npos;
}

}  // namespace

std::optional<std::string> cleanEmail(std::string_view written) {
    auto email = text::lowercase(text::trim(written));
    const auto at = email.find('@');
    if (at == std::string::npos || email.size() > longest) return std::nullopt;
    const auto local = std::string_view(email).substr(0, at);
    const auto domain = std::string_view(email).substr(at + 1);
    if (!isDotted(local) || !std::ranges::all_of(local, isOfLocalPart)) return std::nullopt;
    if (!isDotted(domain) || !std::ranges::all_of(domain, isOfDomain)) return std::nullopt;
    return email;
}

}  // namespace dorix::service
