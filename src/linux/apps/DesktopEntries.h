#pragma once

#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "linux/apps/DesktopEntry.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// The desktop entries of the installed applications, by the WM_CLASS of their windows. Main executor. They
/// are read in the background: at the start, and again when a window is unknown and a folder of entries has
/// changed since. No call waits for that.
class DesktopEntries {
 public:
    /// The folders of $XDG_DATA_HOME and $XDG_DATA_DIRS and the languages of the environment.
    explicit DesktopEntries(Executor& main);

    /// Folders of entries, the first one's before the others', and suffixes of localised names.
    DesktopEntries(Executor& main, std::vector<std::filesystem::path> folders,
                   std::vector<std::string> languages);
    ~DesktopEntries();

    /// The entry for a window whose WM_CLASS has these halves; the first name that is known decides. By the
    /// class that entries tell, then by file name, in any case of letters. Null when none is known by now;
    /// otherwise good until the next turn of the main loop.
    const DesktopEntry* find(const std::vector<std::string>& names);

 private:
    class Catalogue;

    Task<void> refresh();

    const std::vector<std::filesystem::path> folders_;
    const std::vector<std::string> languages_;
    std::shared_ptr<const Catalogue> known_;
    bool isReading_ = false;
    SerialExecutor reader_{SerialExecutor::AtEnd::drop};
    TaskScope tasks_;
};

}  // namespace dorix
