#include "service/storage/Schema.h"

#include <array>
#include <cstddef>
#include <initializer_list>

namespace dorix::service {

namespace {

using Step = std::initializer_list<std::string_view>;

// Each is run once and never changed afterwards. Times are whole seconds since 1970; hashes are SHA-256 in
// hex.
constexpr Step first = {
    "CREATE TABLE accounts (id TEXT PRIMARY KEY, email TEXT NOT NULL UNIQUE, created BIGINT NOT NULL)",
    // One code an address, the newest.
    "CREATE TABLE codes (email TEXT PRIMARY KEY, salt TEXT NOT NULL, hash TEXT NOT NULL, expires BIGINT NOT "
    "NULL, "
    "tries BIGINT NOT NULL)",
    "CREATE TABLE sessions (token_hash TEXT PRIMARY KEY, id TEXT NOT NULL UNIQUE, "
    "account TEXT NOT NULL REFERENCES accounts (id) ON DELETE CASCADE, device TEXT NOT NULL, "
    "created BIGINT NOT NULL, used BIGINT NOT NULL)",
    "CREATE INDEX sessions_of_account ON sessions (account, used)",
    // How often somebody did something in a stretch of time; who and what is a hash.
    "CREATE TABLE counters (subject TEXT NOT NULL, starts BIGINT NOT NULL, ends BIGINT NOT NULL, "
    "count BIGINT NOT NULL, PRIMARY KEY (subject, starts))",
    "CREATE INDEX counters_over ON counters (ends)",
};
constexpr std::array steps = {first};

std::size_t versionOf(Database& database) {
    database.run("CREATE TABLE IF NOT EXISTS schema_version (version BIGINT NOT NULL)");
    const auto rows = database.run("SELECT version FROM schema_version");
    if (!rows.empty()) return static_cast<std::size_t>(std::stoull(rows.front().front()));
    database.run("INSERT INTO schema_version VALUES (0)");
    return 0;
}

/// Whether there was one to take.
bool takeNextStep(Database& database) {
    const auto version = versionOf(database);
    if (version > steps.size()) throw StorageError("the tables are of a newer dorix-service");
    if (version == steps.size()) return false;
    for (const auto sql : steps.at(version)) database.run(sql);
    database.run("UPDATE schema_version SET version = $1", {std::to_string(version + 1)});
    return true;
}

}  // namespace

void migrate(Database& database) {
    bool took = true;
    while (took) {
        database.transaction(Database::Turn::alone, [&] { took = takeNextStep(database); });
    }
}

}  // namespace dorix::service
