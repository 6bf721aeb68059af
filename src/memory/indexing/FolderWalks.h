#pragma once

#include "base/async/Task.h"
#include "memory/disk/LooseThreads.h"
#include "platform/FileTree.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// A file that may be indexed.
struct FoundFile {
    std::string path;
    double modified = 0;  // seconds since 1970; 0 where that cannot be read
    std::string mount;    // that it lies in, if that is on another computer
};

/// What a walk through a folder came to.
struct FolderFiles {
    std::vector<FoundFile> files;
    /// Folders that did not answer: what lies below them is unknown.
    std::vector<std::string> silent;
};

/// Walks through the user's folders on threads of their own. Of a folder that hangs, as one on a server that
/// has gone, it says so and goes on; one on another computer that lies within a folder of this one does not
/// take that with it. Main executor.
class FolderWalks {
 public:
    /// Both outlive it.
    FolderWalks(FileTree& tree, LooseThreads& threads) : tree_(tree), threads_(threads) {}

    /// The files that `crawl` finds there.
    Task<FolderFiles> filesIn(std::filesystem::path folder);

 private:
    Task<void> addFiles(std::string folder, std::string mount, std::vector<std::string> leftOut,
                        FolderFiles& to);

    FileTree& tree_;
    LooseThreads& threads_;
};

/// When a file was changed last, in seconds since 1970; 0 where that cannot be read. Blocks on the disk; any
/// thread.
double modifiedOf(const std::filesystem::path& file);

/// Whether a path lies below a folder. Pure; any thread.
bool isBelow(std::string_view path, std::string_view folder);

}  // namespace dorix
