#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace dorix::reader {

/// The text of a document in Rich Text Format, in the order of reading: paragraphs and cells end with a line
/// feed, notes follow the text. Without what was deleted under change tracking, headers, and what is there
/// for programs alone. Nothing when it is none, or its groups are nested deeper than any writer nests them.
/// What is damaged gives what is left. Much more than `mostBytes` is not read. Pure; any thread.
std::optional<std::string> rtfText(std::string_view rtf, std::size_t mostBytes);

}  // namespace dorix::reader
