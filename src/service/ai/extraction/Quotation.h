#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dorix::service {

/// Text of the material as it may stand within a line of an answer that is shown as Markdown: nothing in it
/// is a picture, a link that hides its address, or HTML, no character steers the screen or the direction of
/// writing, and it has no line breaks. It reads as it stood there otherwise. At most `longest` characters,
/// with "…" where it was cut. Linear; pure, any thread.
std::string plainLine(std::string_view text, std::size_t longest);

/// Without the marks of a list, a heading or a quotation at its beginning.
std::string_view withoutLineMarks(std::string_view line);

}  // namespace dorix::service
