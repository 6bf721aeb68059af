#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "linux/DesktopEntry.h"

namespace dorix {

/// The desktop entries of the installed applications, by the WM_CLASS of their windows. Main executor. Read
/// when first asked for, and again only when a window is unknown and a folder of entries has changed since.
class DesktopEntries {
  public:
    /// The folders of $XDG_DATA_HOME and $XDG_DATA_DIRS and the language of the environment.
    DesktopEntries();

    /// Folders of entries, the first one's before the others', and suffixes of localised names.
    DesktopEntries(std::vector<std::filesystem::path> folders, std::vector<std::string> languages);

    /// The entry for a window whose WM_CLASS has these halves; the first name that is known decides. By the
    /// class that entries tell, then by file name, in any case of letters. Null when there is none; otherwise
    /// good until the next call.
    const DesktopEntry* find(const std::vector<std::string>& names);

  private:
    const DesktopEntry* lookUp(const std::vector<std::string>& names) const;
    bool foldersChanged();
    void readAll();
    void readFolder(const std::filesystem::path& folder);
    void add(DesktopEntry entry);

    std::vector<std::filesystem::path> folders_;
    std::vector<std::string> languages_;
    std::vector<std::filesystem::file_time_type> folderTimes_;
    std::map<std::string, DesktopEntry> byClass_;
    std::map<std::string, DesktopEntry> byId_;
    std::map<std::string, DesktopEntry> byLastPart_;
};

}  // namespace dorix
