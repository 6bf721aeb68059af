#pragma once

#include <filesystem>
#include <functional>
#include <stop_token>
#include <string_view>

namespace dorix {

enum class HistoryExportFormat { markdown, json };

/// Hands the whole history of a file, newest first, to `write`, piece by piece, in one of the formats for
/// people and programs outside; no more than an item is held at once. It reads the file as it is at this
/// moment, whatever is written to it meanwhile. False when the file cannot be read, a piece is refused, or
/// `stop` asks for it. Any thread; blocks on the disk.
bool exportHistory(const std::filesystem::path& database, HistoryExportFormat format,
                   const std::function<bool(std::string_view piece)>& write, const std::stop_token& stop);

}  // namespace dorix
