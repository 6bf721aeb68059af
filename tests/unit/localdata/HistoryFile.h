#pragma once

#include "localdata/HistoryStore.h"
#include "sqlite/Sqlite.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace dorix {

inline HistoryItem historyItem(std::string id, double createdAt) {
    return {.id = std::move(id), .app = "Editor", .title = "Nota", .createdAt = createdAt};
}

/// What a statement of another program gives: the first column of every row, "NULL" where it is that.
inline std::vector<std::string> query(const std::filesystem::path& file, const char* sql) {
    const auto db = sqlite::open(file);
    const auto statement = sqlite::prepare(db.get(), sql);
    std::vector<std::string> values;
    while (statement && sqlite3_step(statement.get()) == SQLITE_ROW) {
        values.push_back(sqlite::columnText(statement.get(), 0).value_or("NULL"));
    }
    return values;
}

inline bool isWhole(const std::filesystem::path& file) {
    return query(file, "PRAGMA integrity_check") == std::vector<std::string>{"ok"};
}

inline std::string bytes(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

inline std::vector<std::string> ids(const auto& items) {
    std::vector<std::string> found;
    found.reserve(items.size());
    for (const auto& item : items) found.push_back(item.id);
    return found;
}

/// The store's log while `function` runs.
inline std::string logOf(auto function) {
    testing::internal::CaptureStderr();
    function();
    return testing::internal::GetCapturedStderr();
}

}  // namespace dorix
