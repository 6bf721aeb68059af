#pragma once

#include "localdata/HistoryItem.h"
#include "sqlite/Sqlite.h"

#include <optional>

/// How the rows of the history's table are read.
namespace dorix::historyrows {

/// All of them, newest first.
inline constexpr const char* selectNewestFirst =
    "SELECT id, kind, app, bundle_id, title, created_at, query, answer, meta FROM history "
    "ORDER BY created_at DESC";

/// The item of a row of that statement. Nothing when the kind is not known to this version.
std::optional<HistoryItem> itemOf(sqlite3_stmt* row);

}  // namespace dorix::historyrows
