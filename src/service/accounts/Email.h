#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dorix::service {

/// The address of whoever uses the service alone, on their own computer. No mail is ever sent there.
inline constexpr std::string_view localEmail = "local@dorix.localhost";

/// The address as accounts know it: trimmed, in lower case. Nothing for what no mail can be sent to, and for
/// what would mean something to a mail server or in a message's head. Pure; any thread.
std::optional<std::string> cleanEmail(std::string_view written);

}  // namespace dorix::service
