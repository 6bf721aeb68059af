#pragma once

#include "service/storage/Database.h"

#include <filesystem>
#include <map>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace dorix::service {

/// A file of its own, readable by its owner alone, with its folder. What is committed survives a loss of
/// power.
class SqliteDatabase final : public Database {
 public:
    explicit SqliteDatabase(const std::filesystem::path& file);

    Rows run(std::string_view sql, const Values& values) override;
    void transaction(Turn turn, const std::function<void()>& body) override;

 private:
    struct Closer {
        void operator()(sqlite3* connection) const;
    };
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };

    void runAll(const char* sql);
    sqlite3_stmt* prepared(std::string_view sql);
    [[noreturn]] void fail() const;

    std::unique_ptr<sqlite3, Closer> connection_;
    // The statements are few, all literals of the program; preparing them anew would double what a look-up
    // costs.
    std::map<std::string, std::unique_ptr<sqlite3_stmt, Finalizer>, std::less<>> statements_;
};

}  // namespace dorix::service
