#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Helpers on UTF-8 text. Pure functions, any thread. A character is what a reader takes for one: an extended
/// grapheme cluster. Bytes that are not UTF-8 count as one character each where text is only cut or trimmed;
/// functions that transform text turn them into U+FFFD.
namespace dorix::text {

/// Whether it has ASCII characters only.
bool isAscii(std::string_view text);

/// Whether it is UTF-8, all of it.
bool isUtf8(std::string_view text);

/// The number of characters.
std::size_t length(std::string_view text);

/// The first `count` characters, or all of the text if it has fewer.
std::string_view prefix(std::string_view text, std::size_t count);

/// The last character; empty for an empty text.
std::string_view lastCharacter(std::string_view text);

/// Trims white space and line ends at both ends.
std::string_view trim(std::string_view text);

/// Trims blanks (space separators and tabs), not line ends, at both ends.
std::string_view trimBlanks(std::string_view text);

/// Trims any of the ASCII characters in `set` at both ends.
std::string_view trimAny(std::string_view text, std::string_view set);

/// The pieces between white space and line ends; empty pieces are dropped.
std::vector<std::string_view> words(std::string_view text);

/// The pieces between the ASCII character `separator`, empty ones included.
std::vector<std::string_view> split(std::string_view text, char separator);

/// The runs of letters (and the marks that belong to them).
std::vector<std::string_view> letterRuns(std::string_view text);

std::string join(const std::vector<std::string_view>& pieces, std::string_view separator);

/// Without regard to case and diacritics, in no language's rules: full case folding after canonical
/// decomposition (Unicode, chapter 3.13 and annex 15), nonspacing marks removed.
std::string fold(std::string_view text);

/// In no language's rules.
std::string lowercase(std::string_view text);

/// The text with its first character in upper case.
std::string capitalizeFirst(std::string_view text);

/// The text with every occurrence of `from` (not empty) replaced.
std::string replaceAll(std::string_view text, std::string_view from, std::string_view to);

}  // namespace dorix::text
