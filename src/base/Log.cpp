#include "base/Log.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

namespace dorix {

namespace {
LogSink& sink() {
    static LogSink current = [](std::string_view line) {
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
    };
    return current;
}

std::string& programName() {
    static std::string name = "DORIX";
    return name;
}

bool endsLinesOrControlsTerminals(UChar32 character) {
    const auto type = u_charType(character);
    return type == U_CONTROL_CHAR || type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR;
}

/// Windows, files and errors are named by others; none of that is to look like a line of ours.
std::string onOneLine(std::string_view text) {
    std::string line;
    const auto size = static_cast<std::int32_t>(text.size());
    for (std::int32_t next = 0; next < size;) {
        const auto first = next;
        UChar32 character = 0;
        U8_NEXT(text.data(), next, size, character);
        if (character < 0) {
            line += "\uFFFD";
        } else if (endsLinesOrControlsTerminals(character)) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(character));
            line += code.data();
        } else {
            line += text.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(next - first));
        }
    }
    return line;
}

}  // namespace

void logLine(std::string_view text, std::string_view component) {
    std::string line = programName();
    if (!component.empty()) line.append(" ").append(component);
    sink()(line.append(": ").append(onOneLine(text)));
}

void setLogName(std::string_view name) { programName() = name; }

void setLogSink(LogSink newSink) { sink() = std::move(newSink); }

}  // namespace dorix
