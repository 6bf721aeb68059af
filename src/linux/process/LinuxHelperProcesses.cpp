#include "linux/process/LinuxHelperProcesses.h"

#include "linux/process/ChildLog.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

namespace dorix {

namespace {

struct SocketPair {
    FileDescriptor ours;
    FileDescriptor theirs;
};

std::optional<SocketPair> makeSocketPair() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return std::nullopt;
    return SocketPair{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

std::string describe(const siginfo_t& end) {
    if (end.si_code == CLD_EXITED) return "ha terminado con el código " + std::to_string(end.si_status);
    return "ha terminado con la señal " + std::to_string(end.si_status);
}

class LinuxHelperProcess final : public HelperProcess {
 public:
    LinuxHelperProcess(FdWatcher& watcher, ReapedChildren& orphans, pid_t child, FileDescriptor socket,
                       FileDescriptor errors, HelperProcesses::Listener listener)
        : watcher_(watcher),
          orphans_(orphans),
          child_(child),
          listener_(std::move(listener)),
          process_(openProcess(child)),
          socket_(std::move(socket)),
          log_(watcher, std::move(errors), "helper"),
          readable_(watcher.watchReadable(socket_.get(), [this] { receive(); })) {}

    ~LinuxHelperProcess() override {
        ::syscall(SYS_pidfd_send_signal, process_.get(), SIGKILL, nullptr, 0);
        orphans_.add(child_);
        log_.finish();
    }

    void send(std::string bytes) override {
        waiting_ += bytes;
        sendWaiting();
    }

 private:
    void receive() {
        std::array<char, 65536> bytes{};
        const auto count = ::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count > 0) {
            const auto onBytes = listener_.onBytes;
            return onBytes({bytes.data(), static_cast<std::size_t>(count)});
        }
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
        // It has closed the socket, and so is about to end if it has not: how is known only then.
        readable_ = watcher_.watchReadable(process_.get(), [this] { ended(); });
    }

    void ended() {
        readable_.reset();
        writable_.reset();
        siginfo_t end{};
        const bool isKnown =
            ::waitid(P_PIDFD, static_cast<id_t>(process_.get()), &end, WEXITED | WNOWAIT | WNOHANG) == 0 &&
            end.si_pid != 0;
        log_.finish();
        const auto onEnd = listener_.onEnd;
        onEnd(isKnown ? describe(end) : "ha terminado");
    }

    void sendWaiting() {
        while (!waiting_.empty()) {
            const auto sent =
                ::send(socket_.get(), waiting_.data(), waiting_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
            if (sent < 0 && errno == EINTR) continue;
            if (sent < 0 && errno == EAGAIN) return waitToSend();
            // What cannot be sent to a process that has ended is lost with it, of which the socket tells.
            waiting_.erase(0, sent < 0 ? std::string::npos : static_cast<std::size_t>(sent));
        }
        writable_.reset();
    }

    void waitToSend() {
        if (!writable_) writable_ = watcher_.watchWritable(socket_.get(), [this] { sendWaiting(); });
    }

    FdWatcher& watcher_;
    ReapedChildren& orphans_;
    const pid_t child_;
    const HelperProcesses::Listener listener_;
    const FileDescriptor process_;
    const FileDescriptor socket_;
    ChildLog log_;
    std::string waiting_;
    Subscription readable_;  // these go before the descriptors
    std::optional<Subscription> writable_;
};

}  // namespace

bool LinuxHelperProcesses::isInstalled(const std::string& name) const {
    return !programBeside(executable_, name).empty();
}

std::unique_ptr<HelperProcess> LinuxHelperProcesses::launch(const std::string& name, Listener listener) {
    const auto program = programBeside(executable_, name);
    auto sockets = program.empty() ? std::nullopt : makeSocketPair();
    auto errors = makePipe();
    if (!sockets || !errors) return nullptr;
    const auto child = spawn({program.string()}, SpawnAs::helper,
                             {.inherited = sockets->theirs.get(), .errors = errors->writing.get()});
    if (!child) return nullptr;
    return std::make_unique<LinuxHelperProcess>(watcher_, orphans_, *child, std::move(sockets->ours),
                                                std::move(errors->reading), std::move(listener));
}

}  // namespace dorix
