#include "memory/store/MemoryFile.h"

#include "base/text/Pieces.h"
#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

constexpr auto schema =
    "PRAGMA journal_mode=WAL;"
    "CREATE TABLE IF NOT EXISTS docs (\n"
    "    id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE, title TEXT NOT NULL,\n"
    "    kind TEXT NOT NULL, modified REAL NOT NULL, indexed REAL NOT NULL);"
    "CREATE TABLE IF NOT EXISTS chunks (\n"
    "    id INTEGER PRIMARY KEY, doc_id INTEGER NOT NULL REFERENCES docs(id) ON DELETE CASCADE,\n"
    "    ord INTEGER NOT NULL, text TEXT NOT NULL, vec BLOB);"
    "CREATE INDEX IF NOT EXISTS chunks_doc ON chunks(doc_id);"
    "CREATE VIRTUAL TABLE IF NOT EXISTS chunks_fts USING fts5(text, content='chunks', content_rowid='id', "
    "tokenize='unicode61 remove_diacritics 2');"
    "CREATE TABLE IF NOT EXISTS activity (\n"
    "    id INTEGER PRIMARY KEY, ts REAL NOT NULL, app TEXT NOT NULL, bundle TEXT, title TEXT NOT NULL, "
    "document TEXT);"
    "CREATE INDEX IF NOT EXISTS activity_ts ON activity(ts);"
    "PRAGMA foreign_keys=ON;";

// Words that a question is made of rather than what it is about.
constexpr std::array<std::string_view, 48> stopWords{
    "que",       "los",       "las",     "del",   "con",      "por",    "para",  "una",
    "uno",       "unos",      "unas",    "donde", "esta",     "estaba", "como",  "cual",
    "quien",     "sobre",     "the",     "and",   "for",      "with",   "busca", "buscame",
    "encuentra", "documento", "archivo", "tengo", "hablamos", "dijo",   "mas",   "este",
    "ese",       "eso",       "what",    "where", "did",      "say",    "said",  "about",
    "search",    "find",      "from",    "that",  "this",     "have",   "file",  "document"};

constexpr std::size_t shortestWord = 3;
constexpr std::size_t perLeg = 40;
constexpr double fusionConstant = 60;

double reciprocalRank(std::size_t rank) { return 1 / (fusionConstant + static_cast<double>(rank)); }

bool isStopWord(std::string_view word) { return std::ranges::find(stopWords, word) != stopWords.end(); }

/// What the index of words is asked; empty where the query has no word to look for. No mark in the query is
/// taken for an operator.
std::string wordsToMatch(const std::string& query) {
    const auto folded = text::fold(query);
    std::string match;
    for (const auto word : text::alphanumericRuns(folded)) {
        if (text::length(word) < shortestWord || isStopWord(word)) continue;
        if (!match.empty()) match += " OR ";
        match.append("\"").append(word).append("\"");
    }
    return match;
}

std::vector<float> vectorIn(sqlite3_stmt* row, int column) {
    const auto bytes = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
    std::vector<float> vector(bytes / sizeof(float));
    // An empty blob is a null pointer.
    if (!vector.empty())
        std::memcpy(vector.data(), sqlite3_column_blob(row, column), vector.size() * sizeof(float));
    return vector;
}

void bindVector(sqlite3_stmt* row, int parameter, const std::optional<std::vector<float>>& vector) {
    if (!vector) {
        sqlite3_bind_null(row, parameter);
    } else {
        // Also an empty one has an address, without which it would be NULL.
        const auto* bytes = vector->empty() ? static_cast<const void*>("") : vector->data();
        sqlite3_bind_blob64(row, parameter, bytes, vector->size() * sizeof(float), SQLITE_TRANSIENT);
    }
}

/// All that is written while it lives becomes true at once, or not at all.
class Transaction {
 public:
    explicit Transaction(sqlite3* db) : db_(db) { run("BEGIN"); }
    ~Transaction() {
        if (!isOver_) run("ROLLBACK");
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// False where it could not be kept; it is undone then.
    bool commit() {
        isOver_ = run("COMMIT");
        return isOver_;
    }

 private:
    bool run(const char* sql) {
        const auto statement = sqlite::prepare(db_, sql);
        return statement && sqlite3_step(statement.get()) == SQLITE_DONE;
    }

    sqlite3* const db_;
    bool isOver_ = false;
};

}  // namespace

MemoryFile::MemoryFile(const std::filesystem::path& file) : db_(sqlite::open(file)) {
    if (db_) sqlite3_exec(db_.get(), schema, nullptr, nullptr, nullptr);
}

void MemoryFile::run(const char* sql) const {
    if (const auto statement = sqlite::prepare(db_.get(), sql)) sqlite3_step(statement.get());
}

std::optional<double> MemoryFile::docModified(const std::string& path) const {
    const auto statement = sqlite::prepare(db_.get(), "SELECT modified FROM docs WHERE path = ?");
    if (!statement) return std::nullopt;
    sqlite::bindText(statement.get(), 1, path);
    if (sqlite3_step(statement.get()) != SQLITE_ROW) return std::nullopt;
    return sqlite3_column_double(statement.get(), 0);
}

std::vector<std::string> MemoryFile::docPaths(const std::string& kind) const {
    std::vector<std::string> paths;
    const auto statement = sqlite::prepare(db_.get(), "SELECT path FROM docs WHERE kind = ?");
    if (!statement) return paths;
    sqlite::bindText(statement.get(), 1, kind);
    while (sqlite3_step(statement.get()) == SQLITE_ROW)
        paths.push_back(sqlite::columnText(statement.get(), 0).value_or(""));
    return paths;
}

void MemoryFile::upsert(const MemoryDocument& document, double now) {
    Transaction transaction(db_.get());
    remove(document.path);
    insert(document, now);
    if (!transaction.commit()) forgetVectors();
}

void MemoryFile::removeDoc(const std::string& path) {
    Transaction transaction(db_.get());
    remove(path);
    if (!transaction.commit()) forgetVectors();
}

/// The index of words has to be told what it held of each chunk.
void MemoryFile::remove(const std::string& path) {
    const auto chunks = sqlite::prepare(
        db_.get(), "SELECT c.id, c.text FROM chunks c JOIN docs d ON d.id = c.doc_id WHERE d.path = ?");
    const auto unindex =
        sqlite::prepare(db_.get(), "INSERT INTO chunks_fts(chunks_fts, rowid, text) VALUES ('delete', ?, ?)");
    if (chunks && unindex) {
        sqlite::bindText(chunks.get(), 1, path);
        while (sqlite3_step(chunks.get()) == SQLITE_ROW) {
            const auto id = sqlite3_column_int64(chunks.get(), 0);
            sqlite3_bind_int64(unindex.get(), 1, id);
            sqlite::bindText(unindex.get(), 2, sqlite::columnText(chunks.get(), 1));
            sqlite3_step(unindex.get());
            sqlite3_reset(unindex.get());
            for (auto& [dimension, index] : vectors_) index->remove(id);
        }
    }
    for (const auto* sql : {"DELETE FROM chunks WHERE doc_id IN (SELECT id FROM docs WHERE path = ?)",
                            "DELETE FROM docs WHERE path = ?"}) {
        const auto statement = sqlite::prepare(db_.get(), sql);
        if (!statement) continue;
        sqlite::bindText(statement.get(), 1, path);
        sqlite3_step(statement.get());
    }
}

void MemoryFile::insert(const MemoryDocument& document, double now) {
    const auto statement = sqlite::prepare(
        db_.get(), "INSERT INTO docs(path, title, kind, modified, indexed) VALUES (?,?,?,?,?)");
    if (!statement) return;
    sqlite::bindText(statement.get(), 1, document.path);
    sqlite::bindText(statement.get(), 2, document.title);
    sqlite::bindText(statement.get(), 3, document.kind);
    sqlite3_bind_double(statement.get(), 4, document.modified);
    sqlite3_bind_double(statement.get(), 5, now);
    // Without its document a chunk would be another one's.
    if (sqlite3_step(statement.get()) != SQLITE_DONE) return;
    const auto id = sqlite3_last_insert_rowid(db_.get());
    int position = 0;
    for (const auto& chunk : document.chunks) insertChunk(id, position++, chunk);
}

void MemoryFile::insertChunk(std::int64_t document, int position, const MemoryChunk& chunk) {
    const auto insert =
        sqlite::prepare(db_.get(), "INSERT INTO chunks(doc_id, ord, text, vec) VALUES (?,?,?,?)");
    const auto index = sqlite::prepare(db_.get(), "INSERT INTO chunks_fts(rowid, text) VALUES (?, ?)");
    if (!insert || !index) return;
    sqlite3_bind_int64(insert.get(), 1, document);
    sqlite3_bind_int(insert.get(), 2, position);
    sqlite::bindText(insert.get(), 3, chunk.text);
    bindVector(insert.get(), 4, chunk.vec);
    if (sqlite3_step(insert.get()) != SQLITE_DONE) return;
    const auto id = sqlite3_last_insert_rowid(db_.get());
    sqlite3_bind_int64(index.get(), 1, id);
    sqlite::bindText(index.get(), 2, chunk.text);
    sqlite3_step(index.get());
    // What lies further on is loaded with the rest.
    if (chunk.vec && id <= loadedUpTo_) keepVector(id, *chunk.vec);
}

MemoryCounts MemoryFile::counts() const {
    const auto count = [this](const char* sql) -> std::int64_t {
        const auto statement = sqlite::prepare(db_.get(), sql);
        if (!statement || sqlite3_step(statement.get()) != SQLITE_ROW) return 0;
        return sqlite3_column_int64(statement.get(), 0);
    };
    return {.documents = count("SELECT count(*) FROM docs WHERE kind = 'file'"),
            .chunks = count("SELECT count(*) FROM chunks")};
}

void MemoryFile::clearAll() {
    Transaction transaction(db_.get());
    run("DELETE FROM chunks");
    run("DELETE FROM docs");
    run("INSERT INTO chunks_fts(chunks_fts) VALUES ('rebuild')");
    transaction.commit();
    forgetVectors();
}

// Searching

std::vector<MemoryHit> MemoryFile::search(const std::string& query,
                                          const std::optional<std::vector<float>>& vector,
                                          std::size_t limit) {
    Scores scores;
    addWordsLeg(query, scores);
    if (vector) addVectorLeg(*vector, scores);
    std::vector<std::pair<std::int64_t, double>> ranked(scores.begin(), scores.end());
    const auto kept = std::min(limit, ranked.size());
    std::ranges::partial_sort(ranked, ranked.begin() + static_cast<std::ptrdiff_t>(kept), {},
                              [](const auto& chunk) { return std::pair(-chunk.second, chunk.first); });
    ranked.resize(kept);
    std::vector<MemoryHit> hits;
    for (const auto& [chunk, score] : ranked) {
        if (auto found = hit(chunk)) hits.push_back(*std::move(found));
    }
    return hits;
}

void MemoryFile::addWordsLeg(const std::string& query, Scores& scores) const {
    const auto match = wordsToMatch(query);
    if (match.empty()) return;
    const auto statement = sqlite::prepare(
        db_.get(),
        "SELECT rowid FROM chunks_fts WHERE chunks_fts MATCH ? ORDER BY bm25(chunks_fts) LIMIT 40");
    if (!statement) return;
    sqlite::bindText(statement.get(), 1, match);
    for (std::size_t rank = 0; sqlite3_step(statement.get()) == SQLITE_ROW; ++rank)
        scores[sqlite3_column_int64(statement.get(), 0)] += reciprocalRank(rank);
}

void MemoryFile::addVectorLeg(const std::vector<float>& query, Scores& scores) {
    while (loadVectors(std::numeric_limits<std::size_t>::max())) {
    }
    const auto index = vectors_.find(query.size());
    const auto vectorOf = sqlite::prepare(db_.get(), "SELECT vec FROM chunks WHERE id = ?");
    if (index == vectors_.end() || !vectorOf) return;
    std::vector<std::pair<float, std::int64_t>> similar;
    for (const auto chunk : index->second->nearest(query, perLeg)) {
        if (const auto similarity = product(vectorOf.get(), chunk, query))
            similar.emplace_back(-*similarity, chunk);
    }
    std::ranges::sort(similar);
    for (std::size_t rank = 0; rank < std::min(perLeg, similar.size()); ++rank)
        scores[similar[rank].second] += reciprocalRank(rank);
}

std::optional<float> MemoryFile::product(sqlite3_stmt* vectorOf, std::int64_t chunk,
                                         const std::vector<float>& query) const {
    sqlite3_reset(vectorOf);
    sqlite3_bind_int64(vectorOf, 1, chunk);
    if (sqlite3_step(vectorOf) != SQLITE_ROW) return std::nullopt;
    const auto vector = vectorIn(vectorOf, 0);
    if (vector.size() != query.size()) return std::nullopt;
    float sum = 0;
    for (std::size_t i = 0; i < query.size(); ++i) sum += vector[i] * query[i];
    return sum;
}

std::optional<MemoryHit> MemoryFile::hit(std::int64_t chunk) const {
    const auto statement = sqlite::prepare(db_.get(),
                                           "SELECT d.path, d.title, c.text, d.modified, d.kind FROM chunks c "
                                           "JOIN docs d ON d.id = c.doc_id WHERE c.id = ?");
    if (!statement) return std::nullopt;
    auto* const row = statement.get();
    sqlite3_bind_int64(row, 1, chunk);
    if (sqlite3_step(row) != SQLITE_ROW) return std::nullopt;
    const auto text = [row](int column) { return sqlite::columnText(row, column).value_or(""); };
    return MemoryHit{.path = text(0),
                     .title = text(1),
                     .text = text(2),
                     .modified = sqlite3_column_double(row, 3),
                     .kind = text(4)};
}

bool MemoryFile::loadVectors(std::size_t chunks) {
    if (areLoaded_) return false;
    const auto statement = sqlite::prepare(
        db_.get(), "SELECT id, vec FROM chunks WHERE vec IS NOT NULL AND id > ? ORDER BY id LIMIT ?");
    if (!statement) return false;
    sqlite3_bind_int64(statement.get(), 1, loadedUpTo_);
    constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max());
    sqlite3_bind_int64(statement.get(), 2, static_cast<std::int64_t>(std::min(chunks, most)));
    std::size_t read = 0;
    for (; sqlite3_step(statement.get()) == SQLITE_ROW; ++read) {
        loadedUpTo_ = sqlite3_column_int64(statement.get(), 0);
        keepVector(loadedUpTo_, vectorIn(statement.get(), 1));
    }
    areLoaded_ = read < chunks;
    if (areLoaded_) loadedUpTo_ = std::numeric_limits<std::int64_t>::max();
    return !areLoaded_;
}

void MemoryFile::keepVector(std::int64_t chunk, const std::vector<float>& vector) {
    if (vector.empty()) return;
    auto& index = vectors_[vector.size()];
    if (!index) index = std::make_unique<VectorIndex>(vector.size());
    index->add(chunk, vector);
}

void MemoryFile::forgetVectors() {
    vectors_.clear();
    loadedUpTo_ = 0;
    areLoaded_ = false;
}

// Activity

void MemoryFile::recordActivity(const ActivityRow& activity, const std::optional<std::string>& bundle) {
    const auto statement = sqlite::prepare(
        db_.get(), "INSERT INTO activity(ts, app, bundle, title, document) VALUES (?,?,?,?,?)");
    if (!statement) return;
    sqlite3_bind_double(statement.get(), 1, activity.time);
    sqlite::bindText(statement.get(), 2, activity.app);
    sqlite::bindText(statement.get(), 3, bundle);
    sqlite::bindText(statement.get(), 4, activity.title);
    sqlite::bindText(statement.get(), 5, activity.document);
    sqlite3_step(statement.get());
}

std::vector<ActivityRow> MemoryFile::activitySince(double time) const {
    std::vector<ActivityRow> rows;
    const auto statement =
        sqlite::prepare(db_.get(), "SELECT ts, app, title, document FROM activity WHERE ts >= ? ORDER BY ts");
    if (!statement) return rows;
    auto* const row = statement.get();
    sqlite3_bind_double(row, 1, time);
    while (sqlite3_step(row) == SQLITE_ROW) {
        rows.push_back({.time = sqlite3_column_double(row, 0),
                        .app = sqlite::columnText(row, 1).value_or(""),
                        .title = sqlite::columnText(row, 2).value_or(""),
                        .document = sqlite::columnText(row, 3)});
    }
    return rows;
}

void MemoryFile::pruneActivity(double before) {
    const auto statement = sqlite::prepare(db_.get(), "DELETE FROM activity WHERE ts < ?");
    if (!statement) return;
    sqlite3_bind_double(statement.get(), 1, before);
    sqlite3_step(statement.get());
}

void MemoryFile::clearActivity() { run("DELETE FROM activity"); }

}  // namespace dorix
