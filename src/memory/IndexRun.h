#pragma once

#include "base/async/Executor.h"
#include "base/async/Task.h"
#include "localdata/HistoryItem.h"
#include "memory/DocumentReader.h"
#include "memory/embedding/Embedder.h"
#include "memory/indexing/Chunker.h"
#include "memory/indexing/FolderWalks.h"
#include "memory/indexing/Pace.h"
#include "memory/store/MemoryStore.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace dorix {

/// One run of the index: what is new in the history and in the folders comes in, and files that are gone go.
/// A document is in the index as a whole or not at all, so a run may end anywhere; the next one goes on from
/// there. Main executor, which only passes things on: files are found on threads of their own, read by the
/// reader, and cut on `worker`.
class IndexRun {
 public:
    struct Parts {
        MemoryStore& store;
        Embedder& embedder;
        DocumentReader& reader;
        FolderWalks& walks;
        Pace& pace;
        Executor& worker;
    };
    /// What there is to be indexed, as things stood when the run began.
    struct Sources {
        std::vector<HistoryItem> history;  // newest first; what is growing would be taken for all of it
        std::vector<std::filesystem::path> folders;
    };

    /// What it is given outlives it.
    IndexRun(const Parts& parts, Sources sources) : parts_(parts), sources_(std::move(sources)) {}

    /// Told whether there will be vectors, before anything is indexed.
    std::function<void(bool)> onAvailable = [](bool) {};
    /// Told what it is at, in a line for the user.
    std::function<void(std::string)> onProgress = [](const std::string&) {};

    /// Does it. Once. What throws, but for Cancelled, is a lack of memory or of threads.
    Task<void> done();

    /// How many files it has read by now.
    std::size_t updated() const { return updated_; }

 private:
    /// A document before it is cut: pieces are stored with `head` above them, but have their vectors without.
    struct Source {
        MemoryDocument document;
        std::string head;
        std::string text;
        ChunkSizes sizes;
    };

    Task<bool> prepare();
    Task<void> addHistory();
    Task<void> addFolder(std::filesystem::path folder);
    Task<void> addFile(FoundFile file);
    Task<std::optional<std::string>> read(const FoundFile& found);
    Task<void> removeOthers();
    Task<bool> put(Source source);
    bool isModelGone() const { return embeds_ && parts_.embedder.identity().empty(); }
    Task<std::vector<MemoryChunk>> embedded(std::string head, std::vector<std::string> pieces);

    const Parts parts_;
    const Sources sources_;
    bool embeds_ = false;
    std::unordered_map<std::string, double> known_;  // what the index has, by path: when it had been changed
    std::unordered_set<std::string> seen_;
    std::vector<std::string> silent_;
    std::unordered_set<std::string> lateMounts_;  // whose files are not read any more
    std::size_t updated_ = 0;
};

}  // namespace dorix
