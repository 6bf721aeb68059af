#include "service/storage/PostgresDatabase.h"

#include <libpq-fe.h>

#include <array>
#include <cstddef>
#include <utility>

namespace dorix::service {

namespace {

struct Clearer {
    void operator()(PGresult* result) const { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, Clearer>;

/// The server's words in full may quote values, which are no business of the log.
std::string primaryMessage(const PGresult* result, const PGconn* connection) {
    const char* primary = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
    return std::string("PostgreSQL: ") + (primary != nullptr ? primary : PQerrorMessage(connection));
}

Rows rowsOf(const PGresult* result) {
    Rows rows;
    for (int row = 0; row < PQntuples(result); ++row) {
        auto& values = rows.emplace_back();
        for (int column = 0; column < PQnfields(result); ++column) {
            values.emplace_back(PQgetvalue(result, row, column),
                                static_cast<std::size_t>(PQgetlength(result, row, column)));
        }
    }
    return rows;
}

/// The library's own words about an address that it cannot read quote it, with its password.
void checkAddress(const std::string& address) {
    auto* const options = PQconninfoParse(address.c_str(), nullptr);
    if (options == nullptr) throw StorageError("PostgreSQL: the address cannot be read");
    PQconninfoFree(options);
}

/// The address comes last, as "dbname", so that what it says holds and the rest are defaults: seconds and
/// milliseconds, as the server takes them.
PGconn* open(const std::string& address) {
    checkAddress(address);
    constexpr std::array keywords = {"connect_timeout",  "tcp_user_timeout",
                                     "application_name", "options",
                                     "dbname",           static_cast<const char*>(nullptr)};
    const std::array values = {"5",
                               "10000",
                               "dorix-service",
                               "-c statement_timeout=10000 -c client_min_messages=warning",
                               address.c_str(),
                               static_cast<const char*>(nullptr)};
    return PQconnectdbParams(keywords.data(), values.data(), 1);
}

// Instances that start together change the tables one after the other.
constexpr auto lockOut = "SELECT pg_advisory_xact_lock(3611497)";

}  // namespace

void PostgresDatabase::Closer::operator()(pg_conn* connection) const { PQfinish(connection); }

PostgresDatabase::PostgresDatabase(const std::string& address) : connection_(open(address)) {
    if (isLost()) throw StorageError(std::string("PostgreSQL: ") + PQerrorMessage(connection_.get()));
}

bool PostgresDatabase::isLost() const { return PQstatus(connection_.get()) != CONNECTION_OK; }

void PostgresDatabase::restore() {
    PQreset(connection_.get());
    if (isLost()) throw StorageError("PostgreSQL: the server cannot be reached");
}

Rows PostgresDatabase::runOnce(const char* sql, const Values& values) {
    std::vector<const char*> texts;
    for (const auto& value : values) texts.push_back(value.c_str());
    const Result result(PQexecParams(connection_.get(), sql, static_cast<int>(texts.size()), nullptr,
                                     texts.data(), nullptr, nullptr, 0));
    const auto status = PQresultStatus(result.get());
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
        throw StorageError(primaryMessage(result.get(), connection_.get()));
    }
    return rowsOf(result.get());
}

Rows PostgresDatabase::run(std::string_view sql, const Values& values) {
    const std::string statement(sql);
    if (isLost() && !isInTransaction_) restore();
    try {
        return runOnce(statement.c_str(), values);
    } catch (const StorageError&) {
        // Lost before the statement was sent, most of all while nobody used it; a statement that was carried
        // out without an answer is one of those that may be repeated.
        if (!isLost() || isInTransaction_) throw;
        restore();
        return runOnce(statement.c_str(), values);
    }
}

void PostgresDatabase::transaction(Turn turn, const std::function<void()>& body) {
    run("BEGIN", {});
    isInTransaction_ = true;
    try {
        if (turn == Turn::alone) run(lockOut, {});
        body();
        run("COMMIT", {});
        isInTransaction_ = false;
    } catch (...) {
        isInTransaction_ = false;
        const Result ignored(PQexec(connection_.get(), "ROLLBACK"));
        throw;
    }
}

}  // namespace dorix::service
