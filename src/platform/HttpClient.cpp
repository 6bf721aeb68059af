#include "platform/HttpClient.h"

#include <algorithm>

namespace dorix {

std::optional<std::string_view> HttpHead::header(std::string_view name) const {
    const auto found = std::ranges::find(headers, name, [](const auto& header) -> std::string_view {
        return header.first;
    });
    if (found == headers.end()) return std::nullopt;
    return found->second;
}

}  // namespace dorix
