#pragma once

#include "localdata/HistoryItem.h"
#include "sqlite/Sqlite.h"

#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// The JSON text that a row keeps of what is known besides: an object with the fields that are present.
/// Nothing when a text is no UTF-8. Pure, any thread.
std::optional<std::string> encodeMeta(const HistoryItem::Meta& meta);

/// The other way. Null counts as absent, and keys that are unknown are passed over. Text that is no such
/// object gives an empty Meta, as does one field of another type than expected: half of a row would mislead.
HistoryItem::Meta decodeMeta(std::string_view json);

}  // namespace dorix

/// How the rows of the history's table are read.
namespace dorix::historyrows {

/// All of them, newest first.
inline constexpr const char* selectNewestFirst =
    "SELECT id, kind, app, bundle_id, title, created_at, query, answer, meta FROM history "
    "ORDER BY created_at DESC";

/// Those before a date, newest first.
inline constexpr const char* selectOlder =
    "SELECT id, kind, app, bundle_id, title, created_at, query, answer, meta FROM history "
    "WHERE created_at < ? ORDER BY created_at DESC";

/// The item of a row of these statements. Nothing when the kind is not known to this version.
std::optional<HistoryItem> itemOf(sqlite3_stmt* row);

}  // namespace dorix::historyrows
