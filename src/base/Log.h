#pragma once

#include <functional>
#include <string_view>

namespace dorix {

/// Writes one line for whoever looks after the program, in English, with the prefix "DORIX: ", or with the
/// name of a component whose own words it passes on, "DORIX SQLite: ". A program may have another name there.
/// There are no levels. Any thread; not the audio thread. Whatever the text holds, it stays one line and
/// moves no terminal: control characters are written out, and what is no UTF-8 is replaced.
void logLine(std::string_view text, std::string_view component = {});

/// What lines begin with, "DORIX" until it is set. Set once, before other threads start.
void setLogName(std::string_view name);

/// Where log lines go, standard error until it is set. Set once, before other threads start; the sink may be
/// called from any thread and gets the line with its prefix and without a line end.
using LogSink = std::function<void(std::string_view line)>;
void setLogSink(LogSink sink);

}  // namespace dorix
