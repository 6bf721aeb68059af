#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What the service asks of a database, in the SQL that SQLite and PostgreSQL share: parameters $1, $2 and so
/// on, first used in that order; no NULL; values as text on both ways, where a number is its digits.
namespace dorix::service {

/// The database cannot be used right now. Its words are for the log and hold no values.
class StorageError : public std::exception {
 public:
    explicit StorageError(std::string message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return message_.c_str(); }

 private:
    std::string message_;
};

using Values = std::vector<std::string>;
using Rows = std::vector<Values>;

/// One connection. One thread at a time; every call blocks on the disk or the network. All of it throws
/// StorageError.
class Database {
 public:
    virtual ~Database() = default;

    /// Runs one statement, which commits by itself outside of a transaction, and gives the rows that it
    /// returns.
    virtual Rows run(std::string_view sql, const Values& values) = 0;
    Rows run(std::string_view sql) { return run(sql, {}); }

    /// All of `body` or nothing of it, also when the process is killed. What it throws passes through. No
    /// transaction within another. With `alone` no other instance runs such a transaction meanwhile.
    enum class Turn : std::uint8_t { beside, alone };
    virtual void transaction(Turn turn, const std::function<void()>& body) = 0;
};

/// A connection to "sqlite:FILE" or "postgresql://…".
std::unique_ptr<Database> connect(const std::string& address);

/// How many connections are of use at once.
int usefulConnections(const std::string& address);

}  // namespace dorix::service
