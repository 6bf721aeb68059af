#include "platform/HttpClient.h"

#include <algorithm>

namespace dorix {

std::optional<std::string_view> HttpHead::header(std::string_view name) const {
    const auto found =
        std::ranges::find(headers, name, [](const auto& header) -> std::string_view { return header.first; });
    if (found == headers.end()) return std::nullopt;
    return found->second;
}

Task<std::string> wholeBody(HttpBody& body, std::size_t largest) {
    std::string whole;
    while (auto bytes = co_await body.next()) {
        if (bytes->size() > largest - whole.size()) {
            throw HttpError(HttpError::Kind::tooLarge, "the answer is too long");
        }
        whole += *bytes;
    }
    co_return whole;
}

}  // namespace dorix
