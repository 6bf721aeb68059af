#pragma once

#include <string>
#include <string_view>

/// What is taken off an answer before it is typed. Pure; any thread.
namespace dorix {

/// Without the white space at its ends, and without the quotes that a model likes to wrap a text in: one
/// layer of each kind.
std::string withoutQuotes(std::string_view text);

/// Without the marks of Markdown: what is typed is plain text.
std::string withoutMarks(std::string_view text);

}  // namespace dorix
