#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// The host of a page's address in lower case, without user, port or the brackets of an IPv6 address. None
/// when the address has no host or cannot be one. Pure, any thread; takes any bytes.
std::optional<std::string> hostOf(std::string_view url);

}  // namespace dorix
