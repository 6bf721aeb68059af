#pragma once

#include "base/async/SerialExecutor.h"
#include "base/async/Task.h"
#include "memory/store/MemoryFile.h"
#include "memory/store/MemoryRecords.h"

#include <atomic>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace dorix {

/// The user's memory: documents in chunks, found by words and by meaning, and what the user worked with. Its
/// calls are put through one after the other on a thread of its own; callers, on any executor, wait in their
/// tasks. Nothing throws or tells of a failure. What was called is done, also when its caller goes meanwhile.
class MemoryStore {
 public:
    /// `clock` is asked for the date, and outlives it.
    MemoryStore(Executor& clock, std::filesystem::path file);
    ~MemoryStore() { isEnding_ = true; }
    MemoryStore(const MemoryStore&) = delete;
    MemoryStore& operator=(const MemoryStore&) = delete;

    /// Has the vectors loaded, a few at a time between the calls, so that the first search need not wait.
    void warmUp();

    // As those of MemoryFile.
    Task<std::optional<double>> docModified(std::string path);
    Task<std::unordered_map<std::string, double>> docsModified(std::string kind, bool hasModel);
    Task<std::vector<std::string>> docPaths(std::string kind);
    Task<void> upsert(MemoryDocument document);
    Task<void> removeDoc(std::string path);
    Task<MemoryCounts> counts();
    Task<void> clearAll();
    Task<bool> mergeWords();
    /// Before each run and each search that has vectors, with the embedder's identity.
    Task<void> useVectorsOf(std::string identity);
    Task<std::vector<MemoryHit>> search(std::string query, std::optional<std::vector<float>> vector,
                                        std::size_t limit);
    /// As of now.
    Task<void> recordActivity(std::string app, std::optional<std::string> bundle, std::string title,
                              std::optional<std::string> document);
    Task<std::vector<ActivityRow>> activitySince(double time);
    Task<void> pruneActivity(int days);
    Task<void> clearActivity();

 private:
    void loadMore();
    MemoryFile& file();

    Executor& clock_;
    const std::filesystem::path path_;
    std::optional<MemoryFile> file_;      // opened by the first call, on the thread
    std::atomic<bool> isEnding_ = false;  // what is loaded for later searches is not waited for
    SerialExecutor thread_;
};

}  // namespace dorix
