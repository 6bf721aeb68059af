#pragma once

#include "service/storage/Database.h"

#include <memory>
#include <string>

struct pg_conn;

namespace dorix::service {

/// A connection that is made again when the server comes back: the call that finds it lost fails, and outside
/// of a transaction is tried once more. A server that does not answer is given up after some seconds.
class PostgresDatabase final : public Database {
 public:
    explicit PostgresDatabase(const std::string& address);

    Rows run(std::string_view sql, const Values& values) override;
    void transaction(Turn turn, const std::function<void()>& body) override;

 private:
    struct Closer {
        void operator()(pg_conn* connection) const;
    };

    bool isLost() const;
    void restore();
    Rows runOnce(const char* sql, const Values& values);

    std::unique_ptr<pg_conn, Closer> connection_;
    bool isInTransaction_ = false;
};

}  // namespace dorix::service
