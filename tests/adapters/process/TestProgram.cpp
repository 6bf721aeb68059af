#include "adapters/process/TestProgram.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <thread>

namespace dorix {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> readList(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<std::string> entries;
    for (std::string entry; std::getline(stream, entry, '\0');) entries.push_back(entry);
    return entries;
}

bool isZombie(pid_t process) {
    std::ifstream stream("/proc/" + std::to_string(process) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    const auto name = text.rfind(')');
    return name == std::string::npos || text.at(name + 2) == 'Z';
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (auto& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

}  // namespace

TestProgram::TestProgram() {
    // Those whose parent dies become ours, so that they can be waited for.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    auto pattern = (fs::temp_directory_path() / "dorix-process-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
}

TestProgram::~TestProgram() {
    // The watchdogs first: the others would come back.
    for (const auto process : watchdogs()) kill(process, SIGKILL);
    for (const auto process : programs()) kill(process, SIGKILL);
    eventually([this] { return watchdogs().empty() && programs().empty(); });
    while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
    fs::remove_all(folder_);
}

pid_t TestProgram::start(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{DORIX_BINARY};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment{"HOME=" + folder_.string(),
                                         "XDG_CONFIG_HOME=" + (folder_ / "config").string(),
                                         "XDG_RUNTIME_DIR=" + folder_.string(),
                                         "PULSE_SERVER=unix:" + (folder_ / "none").string(),
                                         "LC_ALL=C.UTF-8",
                                         "PATH=/usr/bin:/bin",
                                         "OF_THE_USER=kept as it is"};
    const auto argv = pointers(command);
    const auto envp = pointers(environment);
    const pid_t child = fork();
    if (child != 0) return child;
    // An open file that the program does not know of.
    open("/etc/passwd", O_RDONLY);
    const int log = open((folder_ / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(log, STDERR_FILENO);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
}

int TestProgram::wait(pid_t process) {
    int status = -1;
    eventually([&] { return waitpid(process, &status, WNOHANG) != 0; });
    return status;
}

std::set<pid_t> TestProgram::processes(bool watchdogs) const {
    std::set<pid_t> found;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const auto name = entry.path().filename().string();
        if (!std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; })) continue;
        const auto process = static_cast<pid_t>(std::stol(name));
        if (!environmentOf(process).contains("HOME=" + folder_.string()) || isZombie(process)) continue;
        const auto arguments = readList(entry.path() / "cmdline");
        const bool watches = std::ranges::find(arguments, "--watchdog") != arguments.end();
        std::error_code error;
        // Between fork and exec a new process still looks like the one that starts it.
        const bool isItself = fs::read_symlink(entry.path() / "exe", error) == fs::path(DORIX_BINARY);
        if (isItself && watches == watchdogs) found.insert(process);
    }
    return found;
}

std::set<std::string> environmentOf(pid_t process) {
    const auto list = readList("/proc/" + std::to_string(process) + "/environ");
    return {list.begin(), list.end()};
}

std::vector<std::string> openFilesOf(pid_t process) {
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd", error)) {
        files.push_back(fs::read_symlink(entry.path(), error).string());
    }
    return files;
}

bool eventually(const std::function<bool()>& condition, double seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

}  // namespace dorix
