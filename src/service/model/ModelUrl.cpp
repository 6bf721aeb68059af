#include "service/model/ModelUrl.h"

#include <algorithm>
#include <cstddef>

namespace dorix::service {

std::optional<ModelUrl> parseModelUrl(std::string_view url) {
    ModelUrl parsed;
    parsed.isSecure = url.starts_with("https://");
    if (!parsed.isSecure && !url.starts_with("http://")) return std::nullopt;
    url.remove_prefix(parsed.isSecure ? 8 : 7);
    const auto slash = std::min(url.find('/'), url.size());
    auto authority = url.substr(0, slash);
    parsed.path = url.substr(slash);
    while (parsed.path.ends_with('/')) parsed.path.pop_back();
    const auto bracket = authority.starts_with('[') ? authority.find(']') : 0;
    if (bracket == std::string_view::npos) return std::nullopt;
    const auto colon = authority.find(':', bracket);
    parsed.port =
        colon == std::string_view::npos ? (parsed.isSecure ? "443" : "80") : authority.substr(colon + 1);
    parsed.host = authority.substr(0, colon);
    if (bracket > 0) parsed.host = parsed.host.substr(1, bracket - 1);
    const bool isPort =
        !parsed.port.empty() && parsed.port.size() <= 5 &&
        std::ranges::all_of(parsed.port, [](char digit) { return digit >= '0' && digit <= '9'; });
    // A name and a password in an address would end up in logs; there is a setting for the key.
    if (parsed.host.empty() || !isPort || parsed.host.find('@') != std::string::npos) return std::nullopt;
    return parsed;
}

}  // namespace dorix::service
