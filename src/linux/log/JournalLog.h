#pragma once

namespace dorix {

/// Sends log lines to standard error and to the system's journal; to one of the two only where standard error
/// is the journal already. Call it once, before other threads start.
void logToStderrAndJournal();

}  // namespace dorix
