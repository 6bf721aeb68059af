#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace dorix::reader {

// Texts of word processors' XML, in the order of reading: paragraphs, also those of cells, end with a line
// feed. Without what was deleted under change tracking, comments, field codes, and what is there twice for
// the sake of old programs. Nothing when it is no XML. Entities of its own stay as they are written, and
// nothing is fetched. Much more than `mostBytes` is not read. Pure; any thread.

/// Of a document part of Office Open XML: the text, or its notes.
std::optional<std::string> docxText(std::string xml, std::size_t mostBytes);

/// Of an OpenDocument's content, whose notes follow the text.
std::optional<std::string> odtText(std::string xml, std::size_t mostBytes);

}  // namespace dorix::reader
