#pragma once

#include <string>
#include <string_view>

/// What is taken off an answer before it is typed. Pure; any thread.
namespace dorix {

/// Without the white space at its ends, and without the quotes that a model likes to wrap a text in: one
/// layer of each kind.
std::string withoutQuotes(std::string_view text);

/// What a model made of `selected`, to stand in its place: without the quotes that it was wrapped in, unless
/// `selected` has such as well, and with the white space that `selected` has at its ends. Nothing stays
/// nothing.
std::string inPlaceOf(std::string_view selected, std::string_view rewritten);

/// Without the marks of Markdown: what is typed is plain text.
std::string withoutMarks(std::string_view text);

}  // namespace dorix
