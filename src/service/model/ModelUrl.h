#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dorix::service {

/// Where a model's interface is, such as "https://host:port/v1".
struct ModelUrl {
    bool isSecure = false;
    std::string host;  // an IPv6 address without brackets
    std::string port;
    std::string path;  // what the calls' own paths are appended to; without a slash at the end

    bool operator==(const ModelUrl&) const = default;
};

/// Nothing for what is no such address. Pure; any thread.
std::optional<ModelUrl> parseModelUrl(std::string_view url);

}  // namespace dorix::service
