#include "localdata/HistoryRows.h"

#include "base/Uuid.h"
#include "localdata/HistoryMetaJson.h"

#include <utility>

namespace dorix::historyrows {

/// The file may have been written by anybody, so any column may be NULL.
std::optional<HistoryItem> itemOf(sqlite3_stmt* row) {
    const auto text = [row](int column) { return sqlite::columnText(row, column).value_or(""); };
    const auto kind = historyKind(text(1));
    if (!kind) return std::nullopt;
    auto id = sqlite::columnText(row, 0);
    return HistoryItem{.id = id ? *std::move(id) : makeUuid(),
                       .kind = *kind,
                       .app = text(2),
                       .bundleID = sqlite::columnText(row, 3),
                       .title = text(4),
                       .createdAt = sqlite3_column_double(row, 5),
                       .query = text(6),
                       .answer = text(7),
                       .meta = decodeMeta(text(8))};
}

}  // namespace dorix::historyrows
