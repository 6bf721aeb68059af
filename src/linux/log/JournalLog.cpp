#include "linux/log/JournalLog.h"

#include "base/Log.h"

#include <sys/stat.h>
#include <sys/syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace dorix {

namespace {

/// The service manager names the device and inode of the stream that it connected to standard error.
bool isStderrTheJournal() {
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat status{};
    if (stream == nullptr || fstat(STDERR_FILENO, &status) != 0) return false;
    return stream == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

}  // namespace

void logToStderrAndJournal() {
    setLogSink([journalToo = !isStderrTheJournal()](std::string_view line) {
        const std::string text(line);
        // One write a line, so that lines of several threads do not mix.
        std::fputs((text + "\n").c_str(), stderr);
        if (journalToo) {
            sd_journal_send("MESSAGE=%s", text.c_str(), "PRIORITY=%i", LOG_INFO, "SYSLOG_IDENTIFIER=dorix",
                            nullptr);
        }
    });
}

}  // namespace dorix
