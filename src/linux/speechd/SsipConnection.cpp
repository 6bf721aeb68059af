#include "linux/speechd/SsipConnection.h"

#include "base/Error.h"
#include "base/async/Timeout.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <exception>
#include <system_error>
#include <utility>

namespace dorix {

namespace {

constexpr double patience = 10;                     // seconds, for an answer
constexpr std::size_t longestLine = 1024UZ * 1024;  // bytes
constexpr std::size_t mostLines = 1024UZ * 1024;    // of an answer
constexpr std::size_t codeLength = 3;
constexpr std::string_view lineEnd = "\r\n";

/// Nothing says which message a line of an event belongs to: a connection says one thing after the other.
bool isEvent(int code) { return code >= 700 && code < 800; }

}  // namespace

SsipConnection::SsipConnection(FdWatcher& watcher, FileDescriptor socket)
    : watcher_(watcher),
      socket_(std::move(socket)),
      readable_(watcher.watchReadable(socket_.get(), [this] { read(); })) {}

SsipConnection::~SsipConnection() {
    if (!whyLost_.empty()) return;
    if (isInsideText_) out_ += "\r\n.\r\n";
    out_ += "CANCEL SELF\r\nQUIT\r\n";
    flush();
}

Task<SsipReply> SsipConnection::ask(std::string command) { co_return co_await answer(send(command)); }

Task<void> SsipConnection::say(std::string line) {
    const auto ready = send("SPEAK");
    isInsideText_ = true;
    if (!(co_await answer(ready)).isOk()) {
        isInsideText_ = false;
        throw MessageError("no text is taken");
    }
    // A line with nothing but a dot ends the text.
    const auto taken = send((line.starts_with('.') ? "." : "") + line + "\r\n.");
    isInsideText_ = false;
    if (!(co_await answer(taken)).isOk()) throw MessageError("the text is refused");
}

Task<SsipEvent> SsipConnection::nextEvent() {
    // The stream ends with an error alone.
    co_return (co_await events_.next()).value();
}

Completion<SsipReply> SsipConnection::send(const std::string& line) {
    Completion<SsipReply> reply;
    asked_.push_back(reply);
    if (whyLost_.empty()) {
        out_.append(line).append(lineEnd);
        flush();
    }
    if (!whyLost_.empty()) reply.fail(std::make_exception_ptr(MessageError(whyLost_)));
    return reply;
}

Task<SsipReply> SsipConnection::answer(Completion<SsipReply> reply) {
    auto wait = [](Completion<SsipReply> awaited) -> Task<SsipReply> { co_return co_await awaited; };
    auto got = co_await withTimeout(wait(std::move(reply)), patience);
    if (!got) throw MessageError("no answer");
    co_return std::move(*got);
}

void SsipConnection::flush() {
    while (!out_.empty()) {
        const auto written = ::send(socket_.get(), out_.data(), out_.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (written > 0) {
            out_.erase(0, static_cast<std::size_t>(written));
        } else if (written < 0 && errno == EAGAIN) {
            if (!writable_) writable_ = watcher_.watchWritable(socket_.get(), [this] { flush(); });
            return;
        } else if (written < 0 && errno != EINTR) {
            fail(std::generic_category().message(errno));
            return;
        }
    }
    writable_.reset();
}

void SsipConnection::read() {
    std::array<char, 64UZ * 1024> bytes;  // NOLINT(cppcoreguidelines-pro-type-member-init): written by recv
    const auto count = ::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (count <= 0) {
        fail("it has gone");
        return;
    }
    in_.append(bytes.data(), static_cast<std::size_t>(count));
    std::size_t begin = 0;
    for (auto end = in_.find(lineEnd); end != std::string::npos; end = in_.find(lineEnd, begin)) {
        take(std::string_view(in_).substr(begin, end - begin));
        begin = end + lineEnd.size();
    }
    in_.erase(0, begin);
    if (in_.size() > longestLine || reply_.lines.size() > mostLines) fail("it does not come to an end");
}

/// "249-tells something" any number of times, and "249 ends it".
void SsipConnection::take(std::string_view line) {
    int code = 0;
    const auto digits = line.substr(0, codeLength);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code);
    if (error != std::errc{} || digits.size() < codeLength || end != digits.data() + codeLength) {
        fail("it cannot be understood");
        return;
    }
    const bool isLast = line.size() == codeLength || line[codeLength] != '-';
    if (!isLast) {
        if (!isEvent(code)) reply_.lines.emplace_back(line.substr(codeLength + 1));
    } else if (isEvent(code)) {
        events_.push(static_cast<SsipEvent>(code));
    } else if (!asked_.empty()) {
        auto reply = std::exchange(reply_, {});
        reply.code = code;
        asked_.front().complete(std::move(reply));
        asked_.pop_front();
    }
}

void SsipConnection::fail(const std::string& why) {
    if (!whyLost_.empty()) return;
    whyLost_ = why;
    readable_.reset();
    writable_.reset();
    const auto error = std::make_exception_ptr(MessageError(why));
    for (const auto& reply : std::exchange(asked_, {})) reply.fail(error);
    events_.finish(error);
}

}  // namespace dorix
