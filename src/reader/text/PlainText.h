#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace dorix::reader {

/// A text file's bytes as UTF-8: those of Latin-1 when they are no UTF-8.
std::string plainText(std::string bytes);

/// What a document's text comes to, once it has been read: valid UTF-8 without NUL characters, `limit`
/// characters of it at most; none when there is nothing but white space.
std::optional<std::string> finishedText(std::string text, std::size_t limit);

}  // namespace dorix::reader
