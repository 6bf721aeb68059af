#include "sqlite/Sqlite.h"

#include "base/Log.h"

#include <cstddef>
#include <fstream>
#include <system_error>

namespace dorix::sqlite {

namespace {

/// A new folder and a new file are made before SQLite would do it, to be the user's own, as is a file that
/// was somebody else's to read; what SQLite puts beside the file gets the same mode. Whatever fails here
/// shows when the file is opened.
void prepareFile(const std::filesystem::path& file) {
    using std::filesystem::perms;
    std::error_code ignored;
    if (std::filesystem::create_directories(file.parent_path(), ignored)) {
        std::filesystem::permissions(file.parent_path(), perms::owner_all, ignored);
    }
    // One that is there is not opened here: to close it would give up the locks that SQLite has on it.
    if (!std::filesystem::exists(file, ignored)) std::ofstream(file, std::ios::app).close();
    for (const auto* part : {"", "-wal", "-shm"}) {
        const auto path = std::filesystem::path(file) += part;
        if (!std::filesystem::is_regular_file(path, ignored)) continue;
        std::filesystem::permissions(path, perms::group_all | perms::others_all,
                                     std::filesystem::perm_options::remove, ignored);
    }
}

/// There may be a connection to close even after a failure.
Connection opened(int result, sqlite3* db) {
    Connection connection(db);
    if (result != SQLITE_OK) connection.reset();
    return connection;
}

}  // namespace

void Closer::operator()(sqlite3* db) const { sqlite3_close(db); }

void Finalizer::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Connection open(const std::filesystem::path& file) {
    prepareFile(file);
    sqlite3* db = nullptr;
    const int result = sqlite3_open(file.c_str(), &db);
    return opened(result, db);
}

Connection openReadOnly(const std::filesystem::path& file) {
    sqlite3* db = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    return opened(result, db);
}

bool exec(sqlite3* db, const char* sql) {
    char* message = nullptr;
    const int result = sqlite3_exec(db, sql, nullptr, nullptr, &message);
    // Without a connection there is nobody to word a message.
    if (result != SQLITE_OK) logLine(message != nullptr ? message : sqlite3_errstr(result), "SQLite");
    sqlite3_free(message);
    return result == SQLITE_OK;
}

void emptyLog(sqlite3* db) {
    if (db == nullptr) return;
    sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

Statement prepare(sqlite3* db, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &statement, nullptr);
    return Statement(statement);
}

void bindText(sqlite3_stmt* statement, int parameter, const std::string& text) {
    sqlite3_bind_text(statement, parameter, text.c_str(), -1, SQLITE_TRANSIENT);
}

void bindText(sqlite3_stmt* statement, int parameter, const std::optional<std::string>& text) {
    if (text) {
        bindText(statement, parameter, *text);
    } else {
        sqlite3_bind_null(statement, parameter);
    }
}

std::optional<std::string> columnText(sqlite3_stmt* row, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    if (text == nullptr) return std::nullopt;
    return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(row, column)));
}

}  // namespace dorix::sqlite
