#pragma once

#include "localdata/HistoryItem.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

namespace dorix {

/// The fields of an item that are searched, in their order.
inline constexpr std::array searchedFields{&HistoryItem::title, &HistoryItem::query, &HistoryItem::answer,
                                           &HistoryItem::app};

/// The rows of the history's file that were made before `before` (seconds since 1970) and hold the text,
/// which is folded already, in one of the fields: newest first, `limit` at most. Ends early when told to
/// stop, with what it has. Nothing where the file cannot be read. Any thread; blocks on the disk, a second or
/// so for a hundred thousand rows.
std::vector<HistoryItem> searchHistory(const std::filesystem::path& database, const std::string& folded,
                                       double before, std::size_t limit, const std::stop_token& stop);

}  // namespace dorix
