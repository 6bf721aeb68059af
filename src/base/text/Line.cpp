#include "base/text/Line.h"

#include "base/text/Unicode.h"

#include <unicode/uchar.h>

namespace dorix::text {

std::string asLine(std::string_view text) {
    auto line = toUnicode(text);
    for (std::int32_t i = 0; i < line.length(); ++i) {
        const auto category = u_charType(line[i]);
        const bool isControl =
            category == U_CONTROL_CHAR || category == U_LINE_SEPARATOR || category == U_PARAGRAPH_SEPARATOR;
        if (isControl) line.setCharAt(i, u' ');
    }
    return toUtf8(line);
}

}  // namespace dorix::text
