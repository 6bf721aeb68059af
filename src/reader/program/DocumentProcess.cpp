#include "reader/program/DocumentProcess.h"

#include "base/text/Line.h"
#include "base/text/Text.h"
#include "linux/process/ChildProcesses.h"
#include "reader/program/Extraction.h"
#include "reader/program/PictureText.h"
#include "reader/text/PlainText.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace dorix::reader {

namespace {

constexpr std::size_t longestReason = 200;  // characters
/// As many are read of any text, so that why a document is not read is not taken for a long document.
constexpr std::size_t alwaysRead = 4096;  // characters

using Clock = std::chrono::steady_clock;

/// Waits for it to be readable, or at an end; false when that is not before the deadline.
bool waitFor(int fd, Clock::time_point deadline) {
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd watched{.fd = fd, .events = POLLIN};
        const int ready = ::poll(&watched, 1, static_cast<int>(std::max<long>(left, 0)));
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
    }
}

/// The child that reads the document. It goes with this object.
class Child {
 public:
    explicit Child(pid_t id) : id_(id), process_(openProcess(id)) {}
    ~Child() {
        ::kill(id_, SIGKILL);
        // One that hangs in its disk does not even die: it is buried before a later document.
        waitFor(process_.get(), Clock::now() + std::chrono::seconds(1));
        ::waitpid(id_, nullptr, WNOHANG);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// How it ended; none when it has not by then.
    std::optional<siginfo_t> endBefore(Clock::time_point deadline) const {
        siginfo_t how{};
        if (!waitFor(process_.get(), deadline)) return std::nullopt;
        if (::waitid(P_PID, static_cast<id_t>(id_), &how, WEXITED | WNOWAIT) != 0) return std::nullopt;
        return how;
    }

 private:
    const pid_t id_;
    const FileDescriptor process_;
};

/// How many characters a text has more with this piece of it, at least: where it was cut in the middle of
/// one, each byte of that counts as one here.
std::size_t fewestCharacters(std::string_view piece) {
    constexpr std::size_t perhapsOfACut = 4;
    std::string words(piece);
    std::erase(words, '\0');  // as they go in the end
    const auto count = text::length(words);
    return count - std::min(count, perhapsOfACut);
}

enum class Collected { all, enough, late };

Collected collect(int fd, std::size_t limit, Clock::time_point deadline, std::string& text) {
    const auto most = mostBytes(limit);
    const auto enough = std::max(limit, alwaysRead);
    std::array<char, 65536> bytes{};
    std::size_t characters = 0;
    while (text.size() <= most && characters < enough) {
        if (!waitFor(fd, deadline)) return Collected::late;
        const auto count = ::read(fd, bytes.data(), bytes.size());
        if (count == 0) return Collected::all;
        if (count < 0) continue;
        const std::string_view piece(bytes.data(), static_cast<std::size_t>(count));
        text.append(piece);
        characters += fewestCharacters(piece);
    }
    text.resize(std::min(text.size(), most));
    return Collected::enough;
}

ReadAnswer answerWith(std::string text, std::size_t limit) {
    auto finished = finishedText(std::move(text), limit);
    if (!finished) return {.outcome = ReadAnswer::Outcome::noText};
    return {.outcome = ReadAnswer::Outcome::text, .words = *std::move(finished)};
}

ReadAnswer unreadable(std::string why) {
    return {.outcome = ReadAnswer::Outcome::unreadable, .words = std::move(why)};
}

struct Bounds {
    std::size_t limit;  // characters
    std::chrono::seconds patience;
    /// What it is when the child is killed over it before it gave any text.
    ReadAnswer::Outcome death = ReadAnswer::Outcome::noText;
};

/// A document that takes too much of the processor or of memory is worth what came of it by then.
ReadAnswer answerOfKilled(int signal, std::string text, const Bounds& bounds) {
    if (bounds.death == ReadAnswer::Outcome::noText) {
        auto begun = answerWith(std::move(text), bounds.limit);
        if (begun.outcome == ReadAnswer::Outcome::text) return begun;
    }
    return {.outcome = bounds.death, .words = "ended by signal " + std::to_string(signal)};
}

/// What the child made of it, which may be anything.
ReadAnswer answerOf(const Child& child, int output, const Bounds& bounds) {
    const auto deadline = Clock::now() + bounds.patience;
    std::string text;
    const auto collected = collect(output, bounds.limit, deadline, text);
    if (collected == Collected::enough) return answerWith(std::move(text), bounds.limit);
    const auto end = collected == Collected::late ? std::nullopt : child.endBefore(deadline);
    if (!end) return {.outcome = ReadAnswer::Outcome::late, .words = "it takes too long"};
    const bool isExit = end->si_code == CLD_EXITED;
    if (isExit && end->si_status == static_cast<int>(ReadingEnd::notNow))
        return unreadable(text::asLine(text::prefix(text, longestReason)));
    if (!isExit) return answerOfKilled(end->si_status, std::move(text), bounds);
    if (end->si_status != 0) return {.outcome = ReadAnswer::Outcome::noText};
    return answerWith(std::move(text), bounds.limit);
}

/// `work` writes the text to the descriptor and ends the process.
ReadAnswer readBy(const std::function<void(int output, Complaints complaints)>& work, const Bounds& bounds) {
    static auto complaints = Complaints::logged;
    while (::waitpid(-1, nullptr, WNOHANG) > 0) continue;
    auto output = makePipe();
    const pid_t parent = ::getpid();
    const pid_t child = output ? ::fork() : -1;
    if (child < 0) return unreadable("no process can be started");
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() == parent) work(output->writing.get(), complaints);
        ::_exit(1);
    }
    complaints = Complaints::known;
    output->writing = FileDescriptor();
    return answerOf(Child(child), output->reading.get(), bounds);
}

}  // namespace

ReadAnswer readInProcess(const ReadOrder& order) {
    return readBy([&](int output, Complaints complaints) { extract(order, output, complaints); },
                  {.limit = order.limit, .patience = std::chrono::seconds(order.isIdle ? 120 : 30)});
}

ReadAnswer readInProcess(const PictureOrder& order) {
    return readBy(
        [&](int output, Complaints complaints) { recognise(order, output, complaints); },
        {.limit = order.limit, .patience = picturePatience, .death = ReadAnswer::Outcome::unreadable});
}

}  // namespace dorix::reader
