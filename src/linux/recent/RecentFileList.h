#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the desktop's list of recent files says (freedesktop.org's desktop bookmarks). Pure functions, any
/// thread; they take any bytes.
namespace dorix {

/// The files of this computer that `contents` names, the last used first, `limit` of them at most. Those that
/// a program keeps to itself are left out. Nothing for what is no such list. Takes the contents, as they are
/// read in place.
std::vector<std::filesystem::path> parseRecentFiles(std::string contents, std::size_t limit);

/// The one of `files` whose name, which has an extension, stands in the title of a window. Nothing where it
/// may be another: where files of one name lie in several folders, or in another than the title tells.
std::optional<std::filesystem::path> fileNamedIn(std::string_view title,
                                                 const std::vector<std::filesystem::path>& files,
                                                 const std::filesystem::path& home);

/// The file that a title consists of the whole path of, but for a mark of what is not saved: one in a folder
/// of `home` or in any other, with an extension.
std::optional<std::filesystem::path> fileThatIs(std::string_view title, const std::filesystem::path& home);

}  // namespace dorix
