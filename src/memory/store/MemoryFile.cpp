#include "memory/store/MemoryFile.h"

#include "base/text/Pieces.h"
#include "base/text/Text.h"
#include "memory/store/WordRanking.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <future>
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
    // Which model made the vectors, and of which documents another one did.
    "CREATE TABLE IF NOT EXISTS vector_model (identity TEXT NOT NULL);"
    "CREATE TABLE IF NOT EXISTS stale_docs (doc_id INTEGER PRIMARY KEY REFERENCES docs(id) "
    "ON DELETE CASCADE);"
    // The documents that were put in while there was no model.
    "CREATE TABLE IF NOT EXISTS bare_docs (doc_id INTEGER PRIMARY KEY REFERENCES docs(id) "
    "ON DELETE CASCADE);";

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
constexpr int patienceWithOthers = 1000;  // milliseconds

void addLeg(const std::vector<std::int64_t>& leg, std::unordered_map<std::int64_t, double>& scores) {
    for (std::size_t rank = 0; rank < leg.size(); ++rank)
        scores[leg[rank]] += 1 / (fusionConstant + static_cast<double>(rank));
}

bool isStopWord(std::string_view word) { return std::ranges::find(stopWords, word) != stopWords.end(); }

/// What the index of words is asked for.
std::vector<std::string> wordsToMatch(const std::string& query) {
    const auto folded = text::fold(query);
    std::vector<std::string> words;
    for (const auto word : text::alphanumericRuns(folded)) {
        if (text::length(word) >= shortestWord && !isStopWord(word)) words.emplace_back(word);
    }
    return words;
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
    explicit Transaction(sqlite3* db) : db_(db), isOver_(!run("BEGIN")) {}
    ~Transaction() {
        if (!isOver_) run("ROLLBACK");
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Nothing is to be written where it has not begun.
    bool isOpen() const { return !isOver_; }

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
    bool isOver_;
};

}  // namespace

MemoryFile::MemoryFile(const std::filesystem::path& file)
    : db_(sqlite::open(file)), words_(sqlite::openReadOnly(file)) {
    for (auto* const connection : {db_.get(), words_.get()}) {
        // Whoever looks into the file from outside is soon through with it, and nobody's turn waits here.
        if (connection != nullptr) sqlite3_busy_timeout(connection, patienceWithOthers);
    }
    // Not of the batch, which ends at the first statement that fails: without it what is noted of a document
    // would outlive the document, and be taken for that of the next one with its id.
    run("PRAGMA foreign_keys=ON");
    if (db_) sqlite3_exec(db_.get(), schema, nullptr, nullptr, nullptr);
    for (auto* const connection : {db_.get(), words_.get()}) {
        if (connection != nullptr) addWordRanking(connection);
    }
    // What a search reads of the index of words again and again fits into this.
    if (words_) sqlite3_exec(words_.get(), "PRAGMA cache_size=-8192", nullptr, nullptr, nullptr);
    // A power cut may take the last documents back, never half of one; the next run reads them again. To wait
    // for the disk at each would take longer than all the rest.
    run("PRAGMA synchronous=NORMAL");
}

bool MemoryFile::run(const char* sql) const {
    const auto statement = sqlite::prepare(db_.get(), sql);
    return statement && sqlite3_step(statement.get()) == SQLITE_DONE;
}

std::optional<double> MemoryFile::docModified(const std::string& path) const {
    const auto statement = sqlite::prepare(db_.get(), "SELECT modified FROM docs WHERE path = ?");
    if (!statement) return std::nullopt;
    sqlite::bindText(statement.get(), 1, path);
    if (sqlite3_step(statement.get()) != SQLITE_ROW || isStale(path)) return std::nullopt;
    return sqlite3_column_double(statement.get(), 0);
}

bool MemoryFile::isStale(const std::string& path) const {
    const auto statement = sqlite::prepare(
        db_.get(), "SELECT 1 FROM stale_docs s JOIN docs d ON d.id = s.doc_id WHERE d.path = ?");
    if (!statement) return false;
    sqlite::bindText(statement.get(), 1, path);
    return sqlite3_step(statement.get()) == SQLITE_ROW;
}

std::unordered_map<std::string, double> MemoryFile::docsModified(const std::string& kind,
                                                                 bool hasModel) const {
    std::unordered_map<std::string, double> found;
    const auto statement = sqlite::prepare(
        db_.get(),
        "SELECT path, modified FROM docs WHERE kind = ? AND id NOT IN (SELECT doc_id FROM stale_docs) "
        "AND NOT (? AND id IN (SELECT doc_id FROM bare_docs))");
    if (!statement) return found;
    sqlite::bindText(statement.get(), 1, kind);
    sqlite3_bind_int(statement.get(), 2, hasModel ? 1 : 0);
    while (sqlite3_step(statement.get()) == SQLITE_ROW) {
        found.emplace(sqlite::columnText(statement.get(), 0).value_or(""),
                      sqlite3_column_double(statement.get(), 1));
    }
    return found;
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
    const bool isWhole = transaction.isOpen() && remove(document.path) && insert(document, now);
    if (!isWhole || !transaction.commit()) forgetVectors();
}

void MemoryFile::removeDoc(const std::string& path) {
    Transaction transaction(db_.get());
    if (!transaction.isOpen() || !remove(path) || !transaction.commit()) forgetVectors();
}

/// The index of words has to be told what it held of each chunk.
bool MemoryFile::remove(const std::string& path) {
    const auto chunks = sqlite::prepare(
        db_.get(), "SELECT c.id, c.text FROM chunks c JOIN docs d ON d.id = c.doc_id WHERE d.path = ?");
    const auto unindex =
        sqlite::prepare(db_.get(), "INSERT INTO chunks_fts(chunks_fts, rowid, text) VALUES ('delete', ?, ?)");
    if (!chunks || !unindex) return false;
    sqlite::bindText(chunks.get(), 1, path);
    int result = sqlite3_step(chunks.get());
    for (; result == SQLITE_ROW; result = sqlite3_step(chunks.get())) {
        const auto id = sqlite3_column_int64(chunks.get(), 0);
        sqlite3_bind_int64(unindex.get(), 1, id);
        sqlite::bindText(unindex.get(), 2, sqlite::columnText(chunks.get(), 1));
        if (sqlite3_step(unindex.get()) != SQLITE_DONE) return false;
        sqlite3_reset(unindex.get());
        for (auto& [dimension, index] : vectors_) index->remove(id);
    }
    if (result != SQLITE_DONE) return false;
    for (const auto* sql : {"DELETE FROM chunks WHERE doc_id IN (SELECT id FROM docs WHERE path = ?)",
                            "DELETE FROM docs WHERE path = ?"}) {
        const auto statement = sqlite::prepare(db_.get(), sql);
        if (!statement) return false;
        sqlite::bindText(statement.get(), 1, path);
        if (sqlite3_step(statement.get()) != SQLITE_DONE) return false;
    }
    return true;
}

bool MemoryFile::insert(const MemoryDocument& document, double now) {
    const auto statement = sqlite::prepare(
        db_.get(), "INSERT INTO docs(path, title, kind, modified, indexed) VALUES (?,?,?,?,?)");
    if (!statement) return false;
    sqlite::bindText(statement.get(), 1, document.path);
    sqlite::bindText(statement.get(), 2, document.title);
    sqlite::bindText(statement.get(), 3, document.kind);
    sqlite3_bind_double(statement.get(), 4, document.modified);
    sqlite3_bind_double(statement.get(), 5, now);
    if (sqlite3_step(statement.get()) != SQLITE_DONE) return false;
    const auto id = sqlite3_last_insert_rowid(db_.get());
    int position = 0;
    return (!document.isBare || noteBare(id)) && std::ranges::all_of(document.chunks, [&](const auto& chunk) {
               return insertChunk(id, position++, chunk);
           });
}

bool MemoryFile::noteBare(std::int64_t document) {
    const auto note = sqlite::prepare(db_.get(), "INSERT INTO bare_docs(doc_id) VALUES (?)");
    if (!note) return false;
    sqlite3_bind_int64(note.get(), 1, document);
    return sqlite3_step(note.get()) == SQLITE_DONE;
}

bool MemoryFile::insertChunk(std::int64_t document, int position, const MemoryChunk& chunk) {
    const auto insert =
        sqlite::prepare(db_.get(), "INSERT INTO chunks(doc_id, ord, text, vec) VALUES (?,?,?,?)");
    const auto index = sqlite::prepare(db_.get(), "INSERT INTO chunks_fts(rowid, text) VALUES (?, ?)");
    if (!insert || !index) return false;
    sqlite3_bind_int64(insert.get(), 1, document);
    sqlite3_bind_int(insert.get(), 2, position);
    sqlite::bindText(insert.get(), 3, chunk.text);
    bindVector(insert.get(), 4, chunk.vec);
    if (sqlite3_step(insert.get()) != SQLITE_DONE) return false;
    const auto id = sqlite3_last_insert_rowid(db_.get());
    sqlite3_bind_int64(index.get(), 1, id);
    sqlite::bindText(index.get(), 2, chunk.text);
    if (sqlite3_step(index.get()) != SQLITE_DONE) return false;
    // What lies further on is loaded with the rest.
    if (chunk.vec && id <= loadedUpTo_) keepVector(id, *chunk.vec);
    return true;
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

bool MemoryFile::mergeWords() {
    constexpr auto merge = "INSERT INTO chunks_fts(chunks_fts, rank) VALUES('merge', 64)";  // pages of 4 KB
    if (!db_) return false;
    // Two pieces of a size are made one: otherwise each search goes through up to four of every size.
    if (!mergesPairs_) run("INSERT INTO chunks_fts(chunks_fts, rank) VALUES('usermerge', 2)");
    mergesPairs_ = true;
    const auto changes = sqlite3_total_changes64(db_.get());
    // What fails, on a full disk say, would fail again. The command itself counts as one change.
    return run(merge) && sqlite3_total_changes64(db_.get()) - changes > 1;
}

void MemoryFile::clearAll() {
    Transaction transaction(db_.get());
    run("DELETE FROM chunks");
    run("DELETE FROM docs");
    run("INSERT INTO chunks_fts(chunks_fts) VALUES ('rebuild')");
    transaction.commit();
    forgetVectors();
    // Whoever has had an index deleted looks at what the file takes up.
    run("VACUUM");
    run("PRAGMA wal_checkpoint(TRUNCATE)");
}

// Vectors of models

std::string MemoryFile::vectorModel() const {
    const auto statement = sqlite::prepare(db_.get(), "SELECT identity FROM vector_model");
    if (!statement || sqlite3_step(statement.get()) != SQLITE_ROW) return {};
    return sqlite::columnText(statement.get(), 0).value_or("");
}

void MemoryFile::useVectorsOf(const std::string& identity) {
    if (areComparable_ && vectorsOf_ == identity) return;
    vectorsOf_ = identity;
    areComparable_ = vectorModel() == identity || changeModel(identity);
}

/// Documents that were read without a model count as another one's. The old vectors stay where they are until
/// their documents come anew: writing over all of them at once would take long, and space that may not be
/// there.
bool MemoryFile::changeModel(const std::string& identity) {
    Transaction transaction(db_.get());
    run("INSERT OR IGNORE INTO stale_docs SELECT DISTINCT doc_id FROM chunks");
    run("DELETE FROM vector_model");
    const auto insert = sqlite::prepare(db_.get(), "INSERT INTO vector_model(identity) VALUES (?)");
    sqlite::bindText(insert.get(), 1, identity);
    const bool isNoted = insert && sqlite3_step(insert.get()) == SQLITE_DONE;
    forgetVectors();
    return isNoted && transaction.commit();
}

// Searching

std::vector<MemoryHit> MemoryFile::search(const std::string& query,
                                          const std::optional<std::vector<float>>& vector,
                                          std::size_t limit) {
    auto toMatch = wordsToMatch(query);
    const bool atOnce = vector && areComparable_ && words_ && !toMatch.empty();
    std::packaged_task<Leg()> words([toMatch = std::move(toMatch), db = words_ ? words_.get() : db_.get()] {
        return bestByWords(db, toMatch, perLeg);
    });
    auto wordsFound = words.get_future();
    if (atOnce) {
        wordsThread_.post(std::move(words));
    } else {
        words();
    }
    Scores scores;
    if (vector && areComparable_) addLeg(vectorLeg(*vector), scores);
    addLeg(wordsFound.get(), scores);
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

MemoryFile::Leg MemoryFile::vectorLeg(const std::vector<float>& query) {
    while (loadVectors(std::numeric_limits<std::size_t>::max())) {
    }
    Leg leg;
    const auto index = vectors_.find(query.size());
    const auto vectorOf = sqlite::prepare(db_.get(), "SELECT vec FROM chunks WHERE id = ?");
    if (index == vectors_.end() || !vectorOf) return leg;
    std::vector<std::pair<float, std::int64_t>> similar;
    for (const auto chunk : index->second->nearest(query, perLeg)) {
        if (const auto similarity = product(vectorOf.get(), chunk, query))
            similar.emplace_back(-*similarity, chunk);
    }
    std::ranges::sort(similar);
    similar.resize(std::min(perLeg, similar.size()));
    for (const auto& [similarity, chunk] : similar) leg.push_back(chunk);
    return leg;
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
    const auto statement =
        sqlite::prepare(db_.get(),
                        "SELECT id, vec FROM chunks WHERE vec IS NOT NULL AND id > ? "
                        "AND doc_id NOT IN (SELECT doc_id FROM stale_docs) ORDER BY id LIMIT ?");
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

/// What is deleted on demand is gone from the file as well.
void MemoryFile::clearActivity() {
    run("PRAGMA secure_delete=ON");
    run("DELETE FROM activity");
    run("PRAGMA secure_delete=OFF");
    sqlite::emptyLog(db_.get());
}

}  // namespace dorix
