#include "base/Log.h"

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
}  // namespace

void logLine(std::string_view text, std::string_view component) {
    std::string line = "DORIX";
    if (!component.empty()) line.append(" ").append(component);
    sink()(line.append(": ").append(text));
}

void setLogSink(LogSink newSink) { sink() = std::move(newSink); }

}  // namespace dorix
