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

void logLine(std::string_view text) { sink()("DORIX: " + std::string(text)); }

void setLogSink(LogSink newSink) { sink() = std::move(newSink); }

}  // namespace dorix
