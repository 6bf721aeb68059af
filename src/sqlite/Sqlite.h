#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

/// What the stores share of SQLite, beside its C interface, which they call themselves. Each store has one
/// connection to a file of its own, for as long as the store lives, and uses it from one thread. Every write
/// is a statement that commits by itself, so there is nothing to save at the end and a crash loses no row.
///
/// Stores fail silently: nothing here throws, no failure reaches the user, and what a statement that cannot
/// be prepared would have found is simply not there. All of it blocks on the disk; for another program's lock
/// nothing here waits, unless the store says so.
namespace dorix::sqlite {

struct Closer {
    void operator()(sqlite3* db) const;
};
struct Finalizer {
    void operator()(sqlite3_stmt* statement) const;
};

/// Null where the file could not be opened; every function here takes that too.
using Connection = std::unique_ptr<sqlite3, Closer>;
/// Prepared where it is used, and finalised at the end of the same function.
using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

/// Opens the file, making it and its folder when they are missing. It is readable by the user only from then
/// on. SQLite looks into the file no sooner than the first statement does.
Connection open(const std::filesystem::path& file);

/// Opens a file that is there, to read what it holds by now while its store goes on. Null when that fails.
Connection openReadOnly(const std::filesystem::path& file);

/// Runs a batch of statements up to the first that fails, which is logged; false when one did.
bool exec(sqlite3* db, const char* sql);

/// Moves what was written into the file itself and empties the log beside it, in which rows that were deleted
/// long outlive their deletion. Does nothing while another program reads or writes.
void emptyLog(sqlite3* db);

/// Null when the statement cannot be prepared, without a word.
Statement prepare(sqlite3* db, const char* sql);

/// SQLite copies the text, up to a NUL. Parameters count from 1.
void bindText(sqlite3_stmt* statement, int parameter, const std::string& text);
/// NULL for what is absent.
void bindText(sqlite3_stmt* statement, int parameter, const std::optional<std::string>& text);

/// Columns count from 0. Nothing for NULL.
std::optional<std::string> columnText(sqlite3_stmt* row, int column);

}  // namespace dorix::sqlite
