#include "service/storage/Database.h"

#include "service/storage/PostgresDatabase.h"
#include "service/storage/SqliteDatabase.h"

namespace dorix::service {

namespace {
constexpr std::string_view sqlitePrefix = "sqlite:";

bool isSqlite(std::string_view address) { return address.starts_with(sqlitePrefix); }
}  // namespace

std::unique_ptr<Database> connect(const std::string& address) {
    if (isSqlite(address)) return std::make_unique<SqliteDatabase>(address.substr(sqlitePrefix.size()));
    return std::make_unique<PostgresDatabase>(address);
}

int usefulConnections(const std::string& address) {
    // SQLite writes one after the other, and a look-up is over sooner than another thread could take it up.
    // With a server each call waits for the network.
    return isSqlite(address) ? 1 : 4;
}

}  // namespace dorix::service
