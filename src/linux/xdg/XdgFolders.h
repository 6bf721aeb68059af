#pragma once

#include <filesystem>

namespace dorix {

/// The user's folders as the XDG base directory specification has them, from the environment. A variable that
/// is unset or relative gives its default.
std::filesystem::path xdgConfigHome();
std::filesystem::path xdgDataHome();

}  // namespace dorix
