#pragma once

#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "memory/disk/LooseThreads.h"
#include "memory/recall/NameIndex.h"
#include "platform/FileTree.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// The names of what lies below the home folder. They are read when they are asked for, which goes on behind
/// a question that could not wait for all of them, and kept in memory for as long as questions come. Main
/// executor, which none of it blocks.
///
/// Names that are some seconds old are looked at again, which a question waits for: only folders that have
/// changed are read. Nothing watches the folders: the kernel allows a user so many watches, for all programs
/// together, and keeps what they watch in memory.
class HomeNames {
 public:
    /// All outlive it.
    HomeNames(Executor& executor, FileTree& tree, LooseThreads& threads, std::filesystem::path home);
    ~HomeNames();
    HomeNames(const HomeNames&) = delete;
    HomeNames& operator=(const HomeNames&) = delete;

    /// The paths of 400 files and folders at most whose names hold the tokens, which are folded. Within some
    /// three seconds, with what is known by then.
    Task<std::vector<std::string>> find(std::vector<std::string> tokens, NameIndex::Match match);

 private:
    class Walk;

    Task<void> refresh();
    void forget();
    Task<void> walkOn(std::shared_ptr<Walk> walk);

    Executor& executor_;
    FileTree& tree_;
    LooseThreads& threads_;
    const std::string home_;
    std::shared_ptr<Walk> whole_;   // the newest that came to its end
    std::shared_ptr<Walk> latest_;  // which may be under way
    Timer forgetting_;
    SerialExecutor reader_;
    TaskScope tasks_;
};

}  // namespace dorix
