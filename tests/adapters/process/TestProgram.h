#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace dorix {

/// The program itself, started by a test in a session with nothing in it: no display, no bus, no sound, and a
/// home of its own. Whatever it starts is found and ended at the test's end.
class TestProgram {
 public:
    TestProgram();
    ~TestProgram();
    TestProgram(const TestProgram&) = delete;
    TestProgram& operator=(const TestProgram&) = delete;

    pid_t start(const std::vector<std::string>& arguments = {}) const;

    /// Waits for a process that was started here, or has become ours since; its status, -1 if it does not
    /// end.
    static int wait(pid_t process);

    /// The living processes that run the program, and those that watch over it.
    std::set<pid_t> programs() const { return processes(false); }
    std::set<pid_t> watchdogs() const { return processes(true); }

    std::filesystem::path defaultsFile() const { return folder_ / "config" / "dorix" / "defaults.json"; }

 private:
    std::set<pid_t> processes(bool watchdogs) const;

    std::filesystem::path folder_;
};

std::set<std::string> environmentOf(pid_t process);
std::vector<std::string> openFilesOf(pid_t process);

/// Whether `condition` comes true within `seconds`.
bool eventually(const std::function<bool()>& condition, double seconds = 30);

}  // namespace dorix
