#include "linux/process/ChildCompanionService.h"

#include "linux/process/Listeners.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <set>
#include <system_error>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

/// 256 bits in hexadecimal digits; nothing where the system has no randomness to give.
std::optional<std::string> makeSecret() {
    std::array<unsigned char, 32> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return std::nullopt;
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string secret;
    for (const auto byte : bytes) {
        secret += digits[byte >> 4U];
        secret += digits[byte & 0xFU];
    }
    return secret;
}

/// A pipe that holds a line.
std::optional<Pipe> pipeWith(const std::string& line) {
    auto pipe = makePipe();
    const std::string text = line + "\n";
    // It is far shorter than what a pipe takes at once.
    if (!pipe || ::write(pipe->writing.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        return std::nullopt;
    return pipe;
}

/// The names under which a process has its files open.
std::set<std::string> openFilesOf(pid_t process) {
    std::set<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd", error))
        names.insert(fs::read_symlink(entry.path(), error).string());
    return names;
}

}  // namespace

std::optional<std::string> ChildCompanionService::start(const std::string& address,
                                                        std::function<void(End)> onEnd) {
    end();
    auto secret = makeSecret();
    auto pipe = secret ? pipeWith(*secret) : std::nullopt;
    auto errors = makePipe();
    if (!pipe || !errors || executable_.empty()) return std::nullopt;
    // What else the user has set for a service holds for this one too.
    child_ = spawn({"env", "-u", "DORIX_SERVICE_TLS_CERTIFICATE", "-u", "DORIX_SERVICE_TLS_KEY",
                    "DORIX_SERVICE_LISTEN=" + address, executable_.string(), "--local-secret-fd",
                    std::to_string(inheritedDescriptor)},
                   SpawnAs::child, {.inherited = pipe->reading.get(), .errors = errors->writing.get()});
    if (!child_) return std::nullopt;
    lifeline_ = std::move(pipe->writing);
    log_.emplace(watcher_, std::move(errors->reading), "servicio");
    watch(std::move(onEnd));
    return secret;
}

void ChildCompanionService::watch(std::function<void(End)> onEnd) {
    process_ = openProcess(*child_);
    ended_ = watcher_.watchReadable(process_.get(), [this, onEnd = std::move(onEnd)] {
        const auto told = onEnd;
        const auto how = reap();
        log_->finish();
        letGo();
        told(how);
    });
}

/// What its status says once it has ended.
CompanionService::End ChildCompanionService::reap() const {
    constexpr int badSettings = 3;  // as its --check says it too
    int status = 0;
    ::waitpid(*child_, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == badSettings ? End::badSettings : End::stopped;
}

void ChildCompanionService::letGo() {
    ended_.reset();
    process_ = FileDescriptor();
    lifeline_ = FileDescriptor();
    log_.reset();
    child_.reset();
}

void ChildCompanionService::end() {
    if (child_) children_.add(*child_);
    letGo();
}

bool ChildCompanionService::listensOn(int port) const {
    if (!child_) return false;
    const auto files = openFilesOf(*child_);
    return std::ranges::any_of(listeners(), [&](const Listener& listener) {
        return listener.port == port && files.contains("socket:[" + std::to_string(listener.number) + "]");
    });
}

bool ChildCompanionService::isTrusted(int port) const {
    constexpr uid_t firstUser = 1000;
    bool isThere = false;
    for (const auto& listener : listeners()) {
        if (listener.port != port) continue;
        if (listener.owner != ::getuid() && listener.owner >= firstUser) return false;
        isThere = true;
    }
    return isThere;
}

}  // namespace dorix
