#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace dorix {

/// A PulseAudio server of a test's own, in a folder of its own, with virtual devices: the null sink "mic" and
/// the source "virtmic" that gives back what is played to it (16 kHz mono), "other" (44.1 kHz stereo)
/// likewise. It ends with the test, also when that crashes.
class SoundServer {
 public:
    /// Whether this computer has the server's program.
    static bool isInstalled();

    /// The number of the module that makes the source "virtmic": they are counted as launch() loads them.
    static constexpr const char* virtmicModule = "2";

    SoundServer();
    ~SoundServer();

    void launch();
    void kill();

    /// What names the server to a client.
    std::string address() const;

    /// Runs pactl with these arguments; whether it succeeded.
    bool control(const std::vector<std::string>& arguments) const;

    /// Plays mono sound at 16 kHz into "mic", from a process of its own; returns at once.
    void play(const std::vector<float>& samples);

 private:
    pid_t spawn(std::vector<std::string> command) const;
    void end(pid_t& process, int signal) const;

    std::filesystem::path folder_;
    pid_t server_ = -1;
    pid_t player_ = -1;
};

}  // namespace dorix
