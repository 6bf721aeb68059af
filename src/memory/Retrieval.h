#pragma once

#include "base/async/Executor.h"
#include "base/async/Task.h"
#include "memory/DocumentReader.h"
#include "memory/disk/LooseThreads.h"
#include "memory/embedding/Embedder.h"
#include "memory/recall/HomeNames.h"
#include "memory/recall/MessageSearch.h"
#include "memory/store/MemoryStore.h"
#include "platform/FileTree.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// What the computer knows about a subject: by the names of files, by the messages of workspaces, and by the
/// index. These are looked through at the same time, each for some seconds at most; one that is late is left
/// out. Main executor, which none of it blocks.
class Retrieval {
 public:
    /// All outlive it.
    struct Parts {
        Executor& executor;
        MemoryStore& store;
        Embedder& embedder;
        DocumentReader& reader;
        FileTree& files;
        MessageSearch* messages;  // may be null
        std::filesystem::path home;
    };

    explicit Retrieval(const Parts& parts);
    Retrieval(const Retrieval&) = delete;
    Retrieval& operator=(const Retrieval&) = delete;

    /// In the order in which they are to be told; `limit` is of those that are no messages. Never fails.
    Task<std::vector<MemoryHit>> search(std::string query, std::size_t limit);

 private:
    Task<std::vector<MemoryHit>> inIndex(std::string query, std::size_t limit);
    Task<std::optional<std::vector<float>>> embedded(std::string query);
    Task<std::vector<MemoryHit>> inMessages(std::string query);
    Task<std::vector<MemoryHit>> byName(std::string query);
    Task<MemoryHit> hitOf(std::filesystem::path file, double until);
    Task<std::string> textOf(std::filesystem::path file, double patience);

    const Parts parts_;
    LooseThreads disk_;
    HomeNames names_;
};

}  // namespace dorix
