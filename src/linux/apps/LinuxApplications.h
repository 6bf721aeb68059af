#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The applications of Linux desktops under the identifiers that the tables of applications know.
namespace dorix::linuxapps {

/// The identifier for the first of `names` (a desktop identifier, a window class, an executable) that is
/// known, in any case of letters. None when none is. Any thread.
std::optional<std::string> bundleIdentifier(const std::vector<std::string>& names);

}  // namespace dorix::linuxapps
