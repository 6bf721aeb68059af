#pragma once

#include "base/async/SerialExecutor.h"
#include "memory/store/MemoryRecords.h"
#include "memory/store/VectorIndex.h"
#include "sqlite/Sqlite.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace dorix {

/// The file of the user's memory: documents in chunks, found by words and by meaning, and what the user
/// worked with. One thread. Silent: what goes wrong with the file is never told, and what it would have given
/// is not there. Every call blocks on the disk; a search looks for words and for vectors at the same time,
/// for which it has another connection, with a thread of its own.
class MemoryFile {
 public:
    /// Opens the file, making it, and its folder, when they are missing.
    explicit MemoryFile(const std::filesystem::path& file);

    /// When the document had been changed last, when it was put in; none for one that is not there, or that
    /// is to be put in anew because another model made its vectors.
    std::optional<double> docModified(const std::string& path) const;
    /// What that gives for all documents of a kind, by their paths. Where there is a model now, those that
    /// were put in bare are to be put in anew as well.
    std::unordered_map<std::string, double> docsModified(const std::string& kind, bool hasModel) const;
    std::vector<std::string> docPaths(const std::string& kind) const;

    /// In the place of the document with that path: all of it, or after a crash what there was before.
    void upsert(const MemoryDocument& document, double now);
    void removeDoc(const std::string& path);
    MemoryCounts counts() const;
    void clearAll();

    /// Merges a little of what the index of words has in pieces since documents came and went; whether there
    /// is more to be done that can be done now. What a search finds stays the same, and comes sooner.
    bool mergeWords();

    /// Says which model makes the vectors that come from now on, in what is put in and in searches. When it
    /// is another one than the last time, also in an earlier process, the vectors that are there are not
    /// compared any more, and `docModified` knows of none of their documents until they are put in again.
    /// Otherwise it costs nothing.
    void useVectorsOf(const std::string& identity);

    /// The chunks that fit best, best first: those that have words of the query and those whose vectors are
    /// nearest to its own, by reciprocal rank fusion (Cormack, Clarke and Büttcher, SIGIR 2009, with k = 60).
    /// The first with a vector loads all vectors, unless loadVectors has.
    std::vector<MemoryHit> search(const std::string& query, const std::optional<std::vector<float>>& vector,
                                  std::size_t limit);

    /// Loads vectors for a moment, of at most so many chunks; whether there are more. A search then need not.
    bool loadVectors(std::size_t chunks);

    void recordActivity(const ActivityRow& row, const std::optional<std::string>& bundle);
    /// In the order of time.
    std::vector<ActivityRow> activitySince(double time) const;
    void pruneActivity(double before);
    void clearActivity();

 private:
    using Scores = std::unordered_map<std::int64_t, double>;

    /// Whether it came to its end without giving a row.
    bool run(const char* sql) const;
    bool isStale(const std::string& path) const;
    std::string vectorModel() const;
    bool changeModel(const std::string& identity);
    // False where a statement failed: then nothing of the document is to be kept.
    bool remove(const std::string& path);
    bool insert(const MemoryDocument& document, double now);
    bool insertChunk(std::int64_t document, int position, const MemoryChunk& chunk);
    bool noteBare(std::int64_t document);
    /// The chunks of a leg, best first.
    using Leg = std::vector<std::int64_t>;
    Leg vectorLeg(const std::vector<float>& query);
    std::optional<float> product(sqlite3_stmt* vectorOf, std::int64_t chunk,
                                 const std::vector<float>& query) const;
    std::optional<MemoryHit> hit(std::int64_t chunk) const;
    void keepVector(std::int64_t chunk, const std::vector<float>& vector);
    void forgetVectors();

    const sqlite::Connection db_;
    const sqlite::Connection words_;  // reads; the other thread's while a search runs
    // What is loaded of the vectors: those of the chunks up to the last one that was read.
    std::unordered_map<std::size_t, std::unique_ptr<VectorIndex>> vectors_;  // by dimension
    std::int64_t loadedUpTo_ = 0;
    bool areLoaded_ = false;
    std::string vectorsOf_;  // the model in use, once it has been told
    bool mergesPairs_ = false;
    bool areComparable_ = true;  // unless a change of the model could not be kept
    SerialExecutor wordsThread_;
};

}  // namespace dorix
