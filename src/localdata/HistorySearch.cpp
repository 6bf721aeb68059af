#include "localdata/HistorySearch.h"

#include "base/text/Text.h"
#include "localdata/HistoryRows.h"
#include "sqlite/Sqlite.h"

#include <algorithm>

namespace dorix {

std::vector<HistoryItem> searchHistory(const std::filesystem::path& database, const std::string& folded,
                                       double before, std::size_t limit, const std::stop_token& stop) {
    const auto db = sqlite::openReadOnly(database);
    const auto statement = sqlite::prepare(db.get(), historyrows::selectOlder);
    std::vector<HistoryItem> found;
    if (!statement) return found;
    sqlite3_bind_double(statement.get(), 1, before);
    while (found.size() < limit && !stop.stop_requested() && sqlite3_step(statement.get()) == SQLITE_ROW) {
        auto item = historyrows::itemOf(statement.get());
        const auto holds = [&](auto field) { return text::fold((*item).*field).contains(folded); };
        if (item && std::ranges::any_of(searchedFields, holds)) found.push_back(*std::move(item));
    }
    return found;
}

}  // namespace dorix
