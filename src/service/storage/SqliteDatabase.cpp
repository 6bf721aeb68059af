#include "service/storage/SqliteDatabase.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstddef>
#include <system_error>
#include <utility>

namespace dorix::service {

namespace {

// Another instance, or a backup, may hold the file for a moment. Milliseconds.
constexpr int longestWait = 5000;

/// SQLite would give a new file the mode of the process's mask, and what lies beside it the mode of the file.
void makeOwnFile(const std::filesystem::path& file) {
    using std::filesystem::perms;
    std::error_code ignored;
    if (file.has_parent_path() && std::filesystem::create_directories(file.parent_path(), ignored)) {
        std::filesystem::permissions(file.parent_path(), perms::owner_all, ignored);
    }
    // What is there already stays as it is; what cannot be made, SQLite complains about.
    const int made = ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (made >= 0) ::close(made);
}

std::string columnText(sqlite3_stmt* row, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    return text == nullptr ? std::string()
                           : std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(row, column)));
}

Values rowOf(sqlite3_stmt* statement) {
    Values row;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        row.push_back(columnText(statement, column));
    }
    return row;
}

void bind(sqlite3_stmt* statement, const Values& values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        sqlite3_bind_text64(statement, static_cast<int>(i) + 1, values[i].data(), values[i].size(),
                            SQLITE_STATIC, SQLITE_UTF8);
    }
}

/// Leaves a statement as nobody's, so that it holds no lock and no value, however its run ends.
class Use {
 public:
    explicit Use(sqlite3_stmt* statement) : statement_(statement) {}
    ~Use() {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

 private:
    sqlite3_stmt* statement_;
};

}  // namespace

void SqliteDatabase::Closer::operator()(sqlite3* connection) const { sqlite3_close(connection); }

void SqliteDatabase::Finalizer::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

SqliteDatabase::SqliteDatabase(const std::filesystem::path& file) {
    makeOwnFile(file);
    sqlite3* connection = nullptr;
    const int result = sqlite3_open_v2(
        file.c_str(), &connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    connection_.reset(connection);
    if (result != SQLITE_OK) throw StorageError(std::string("SQLite: ") + sqlite3_errstr(result));
    sqlite3_busy_timeout(connection, longestWait);
    runAll("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON;");
}

void SqliteDatabase::fail() const {
    throw StorageError(std::string("SQLite: ") + sqlite3_errmsg(connection_.get()));
}

void SqliteDatabase::runAll(const char* sql) {
    if (sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

sqlite3_stmt* SqliteDatabase::prepared(std::string_view sql) {
    if (const auto known = statements_.find(sql); known != statements_.end()) return known->second.get();
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(connection_.get(), sql.data(), static_cast<int>(sql.size()), &statement,
                           nullptr) != SQLITE_OK) {
        fail();
    }
    return statements_.emplace(sql, statement).first->second.get();
}

Rows SqliteDatabase::run(std::string_view sql, const Values& values) {
    auto* statement = prepared(sql);
    const Use use(statement);
    bind(statement, values);
    Rows rows;
    int step = sqlite3_step(statement);
    for (; step == SQLITE_ROW; step = sqlite3_step(statement)) rows.push_back(rowOf(statement));
    if (step != SQLITE_DONE) fail();
    return rows;
}

void SqliteDatabase::transaction(Turn, const std::function<void()>& body) {
    // Whoever may write waits for its turn at the beginning: a reader that would write later cannot always.
    runAll("BEGIN IMMEDIATE");
    try {
        body();
        runAll("COMMIT");
    } catch (...) {
        sqlite3_exec(connection_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

}  // namespace dorix::service
