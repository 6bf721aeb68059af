#include "linux/process/ChildLog.h"

#include "base/Log.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t longestLine = 500;  // bytes
constexpr int linesInMinute = 200;
// Who looks after a server wants to see them; here every use of the program would leave its line.
constexpr std::string_view eachRequest = "event=request ";
// However fast a child writes, others on this thread have their turn.
constexpr std::size_t pieceSize = 4096;

double minuteNow() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::floor(std::chrono::duration<double, std::ratio<60>>(now).count());
}

}  // namespace

ChildLog::ChildLog(FdWatcher& watcher, FileDescriptor reading, std::string_view component)
    : reading_(std::move(reading)), component_(component) {
    ::fcntl(reading_.get(), F_SETFL, O_NONBLOCK);
    readable_ = watcher.watchReadable(reading_.get(), [this] {
        if (!readSome() && errno != EAGAIN && errno != EINTR) readable_.reset();
    });
}

void ChildLog::finish() {
    readable_.reset();
    // A pipe holds no more than this; who still writes is none of the child.
    for (int pieces = 0; pieces < 16 && readSome(); ++pieces) continue;
    if (!line_.empty()) write();
}

/// False when nothing is there, now or for ever, with the reason in errno; 0 is the end.
bool ChildLog::readSome() {
    std::array<char, pieceSize> bytes{};
    errno = 0;
    const auto count = ::read(reading_.get(), bytes.data(), bytes.size());
    if (count <= 0) return false;
    take({bytes.data(), static_cast<std::size_t>(count)});
    return true;
}

void ChildLog::take(std::string_view bytes) {
    for (const char byte : bytes) {
        if (byte == '\n') {
            write();
        } else if (line_.size() < longestLine) {
            line_ += byte;
        }
    }
}

void ChildLog::write() {
    const auto line = std::exchange(line_, {});
    if (line.contains(eachRequest)) return;
    const double minute = minuteNow();
    if (minute != minute_) lines_ = 0;
    minute_ = minute;
    if (lines_ > linesInMinute) return;
    if (++lines_ > linesInMinute) return logLine("too many lines: the next ones are left out", component_);
    logLine(line, component_);
}

}  // namespace dorix
