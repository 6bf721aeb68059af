#pragma once

#include <sys/types.h>

#include <csignal>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// Waits without an event loop; whether `condition` comes true within `seconds`.
bool eventually(const std::function<bool()>& condition, double seconds = 30);

/// Changes of an environment; those that are empty are taken out of it.
using Variables = std::map<std::string, std::string>;

/// Changes the test's own environment for as long as it lives.
class Environment {
 public:
    explicit Environment(const Variables& changes);
    ~Environment() { set(before_); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

 private:
    static void set(const Variables& variables);

    Variables before_;
};

/// A program started by a test and ended with it, also when the test dies. What it complains of is lost.
class OtherProgram {
 public:
    explicit OtherProgram(const std::vector<std::string>& command, const Variables& environment = {},
                          const std::string& input = {});
    /// Unless it has ended, with all that it started.
    ~OtherProgram();
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    pid_t pid() const { return pid_; }
    void signal(int number) const { ::kill(-pid_, number); }
    bool hasEnded();
    /// How it ended, as waitpid tells.
    int wait();
    /// What it has written so far.
    std::string output() const;

 private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    // Files rather than pipes: programs that go to the background keep them open.
    using File = std::unique_ptr<std::FILE, Close>;

    File input_;
    File output_;
    pid_t pid_ = -1;
    int status_ = 0;
    bool ended_ = false;
};

}  // namespace dorix
