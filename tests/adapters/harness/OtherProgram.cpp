#include "adapters/harness/OtherProgram.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace dorix {

bool eventually(const std::function<bool()>& condition, double seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// NOLINTBEGIN(concurrency-mt-unsafe): nobody else reads the environment meanwhile
Environment::Environment(const Variables& changes) {
    for (const auto& [name, value] : changes) {
        const char* old = ::getenv(name.c_str());
        before_[name] = old ? old : "";
    }
    set(changes);
}

void Environment::set(const Variables& variables) {
    for (const auto& [name, value] : variables)
        value.empty() ? ::unsetenv(name.c_str()) : ::setenv(name.c_str(), value.c_str(), 1);
}
// NOLINTEND(concurrency-mt-unsafe)

OtherProgram::OtherProgram(const std::vector<std::string>& command, const Variables& environment,
                           const std::string& input)
    : input_(std::tmpfile()), output_(std::tmpfile()) {
    std::fwrite(input.data(), 1, input.size(), input_.get());
    std::rewind(input_.get());
    auto texts = command;
    std::vector<char*> argv;
    for (auto& text : texts) argv.push_back(text.data());
    argv.push_back(nullptr);
    const Environment changed(environment);
    pid_ = ::fork();
    if (pid_ != 0) {
        ::setpgid(pid_, pid_);  // by both, so that it is so when either goes on
        return;
    }
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(::fileno(input_.get()), STDIN_FILENO);
    ::dup2(::fileno(output_.get()), STDOUT_FILENO);
    ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    ::execvp(argv[0], argv.data());
    ::_exit(127);
}

OtherProgram::~OtherProgram() {
    if (hasEnded()) return;
    signal(SIGTERM);
    signal(SIGCONT);
    if (eventually([this] { return hasEnded(); }, 3)) return;
    signal(SIGKILL);
    wait();
}

bool OtherProgram::hasEnded() {
    ended_ = ended_ || ::waitpid(pid_, &status_, WNOHANG) != 0;
    return ended_;
}

int OtherProgram::wait() {
    eventually([this] { return hasEnded(); });
    return status_;
}

std::string OtherProgram::output() const {
    std::string text;
    std::array<char, 65536> piece{};
    const int file = ::fileno(output_.get());
    while (const auto size = ::pread(file, piece.data(), piece.size(), static_cast<off_t>(text.size()))) {
        if (size < 0) break;
        text.append(piece.data(), static_cast<std::size_t>(size));
    }
    return text;
}

}  // namespace dorix
