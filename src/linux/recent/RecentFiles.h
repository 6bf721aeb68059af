#pragma once

#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace dorix {

/// The desktop's list of the files that were opened of late, for windows whose document nobody else tells.
/// Main executor. It is read in the background, and again when it has changed; no call waits for that.
class RecentFiles {
 public:
    /// `list` is the file that the desktop keeps, which need not be there.
    RecentFiles(Executor& main, std::filesystem::path list, std::filesystem::path home);

    /// The file that a window of this title shows, as far as the title itself tells it or the list as it was
    /// known by now. Sees to it that the next call knows what was written there since.
    std::optional<std::filesystem::path> namedIn(std::string_view title);

 private:
    struct Known;

    Task<void> refresh();

    const std::filesystem::path list_;
    const std::filesystem::path home_;
    std::shared_ptr<const Known> known_;
    bool isReading_ = false;
    SerialExecutor reader_{SerialExecutor::AtEnd::drop};
    TaskScope tasks_;
};

}  // namespace dorix
