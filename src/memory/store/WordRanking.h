#pragma once

#include "sqlite/Sqlite.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace dorix {

/// Makes the connection know what `bestByWords` uses; false where that fails. Before anything else is done
/// with its index of words.
bool addWordRanking(sqlite3* db);

/// The rowids of the `count` rows of `chunks_fts` that fit best, best first, and of equal ones the older
/// first:
///
///     SELECT rowid FROM chunks_fts WHERE chunks_fts MATCH '"w1" OR "w2" …' ORDER BY bm25(chunks_fts) LIMIT
///     count
///
/// with the very scores, but without computing those of all rows, of which each costs the look-up of its
/// length: rows that cannot come among the best are passed by (MaxScore: Turtle and Flood, Information
/// Processing & Management 31, 1995). Words are without quotation marks. Nothing where the index cannot be
/// read. The connection's thread; blocks on the disk.
std::vector<std::int64_t> bestByWords(sqlite3* db, const std::vector<std::string>& words, std::size_t count);

}  // namespace dorix
