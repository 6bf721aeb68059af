#pragma once

#include <filesystem>
#include <vector>

namespace dorix {

/// The user's folders by the XDG base directory rules, from the environment. A variable that
/// is unset or relative gives its default.
std::filesystem::path xdgConfigHome();
std::filesystem::path xdgDataHome();

/// The user's data folder and those of the system, the most important first. Relative ones are left out.
std::vector<std::filesystem::path> xdgDataFolders();

/// Where the user keeps documents: what the desktop's file of user folders says, or else the home folder.
std::filesystem::path xdgDocuments();

}  // namespace dorix
