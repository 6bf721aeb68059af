#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dorix::text {

/// The bytes in base64 (RFC 4648), padded and without line breaks. Pure; any thread.
std::string base64(std::string_view bytes);

/// What such a text stands for; nothing where it is none.
std::optional<std::string> fromBase64(std::string_view text);

}  // namespace dorix::text
