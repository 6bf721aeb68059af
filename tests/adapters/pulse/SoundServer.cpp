#include "adapters/pulse/SoundServer.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>

namespace dorix {

namespace fs = std::filesystem;

namespace {
int wait(pid_t process) {
    int status = -1;
    waitpid(process, &status, 0);
    return status;
}
}  // namespace

bool SoundServer::isInstalled() { return fs::exists("/usr/bin/pulseaudio"); }

SoundServer::SoundServer() {
    auto pattern = (fs::temp_directory_path() / "dorix-pulse-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
}

SoundServer::~SoundServer() {
    end(player_, SIGTERM);
    end(server_, SIGTERM);
    fs::remove_all(folder_);
}

std::string SoundServer::address() const { return "unix:" + (folder_ / "pulse/native").string(); }

void SoundServer::launch() {
    // Without rewinds a sink renders 50 ms ahead, not 2 s, which is how long a first recording would wait.
    server_ = spawn({"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--disallow-exit",
                     "--log-level=error", "-L", "module-native-protocol-unix",  //
                     "-L", "module-null-sink sink_name=mic rate=16000 channels=1 norewinds=1", "-L",
                     "module-remap-source master=mic.monitor source_name=virtmic", "-L",
                     "module-null-sink sink_name=speaker rate=44100 channels=2 norewinds=1", "-L",
                     "module-remap-source master=speaker.monitor source_name=other"});
}

void SoundServer::kill() {
    end(server_, SIGKILL);
    fs::remove_all(folder_ / "pulse");
}

bool SoundServer::control(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"pactl", "-s", address()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return wait(spawn(command)) == 0;
}

void SoundServer::play(const std::vector<float>& samples) {
    end(player_, SIGTERM);
    const auto file = folder_ / "sound.raw";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(samples.data()),
               static_cast<std::streamsize>(samples.size() * sizeof(float)));
    // A server-side buffer longer than the sound: a busy machine does not tear it.
    player_ = spawn({"paplay", "-s", address(), "-d", "mic", "--raw", "--format=float32le", "--rate=16000",
                     "--channels=1", "--latency-msec=4000", file.string()});
}

pid_t SoundServer::spawn(std::vector<std::string> command) const {
    const auto child = fork();
    if (child != 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // NOLINTBEGIN(concurrency-mt-unsafe): the child has one thread
    setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
    setenv("HOME", folder_.c_str(), 1);
    unsetenv("PULSE_SERVER");
    unsetenv("DISPLAY");
    unsetenv("DBUS_SESSION_BUS_ADDRESS");  // a server that finds another's name on the bus gives up
    // NOLINTEND(concurrency-mt-unsafe)
    std::vector<char*> arguments(command.size() + 1);
    std::ranges::transform(command, arguments.begin(), [](auto& argument) { return argument.data(); });
    if (std::freopen("/dev/null", "w", stderr)) execvp(arguments[0], arguments.data());
    _exit(127);
}

void SoundServer::end(pid_t& process, int signal) const {
    if (process <= 0) return;
    ::kill(process, signal);
    wait(process);
    process = -1;
}

}  // namespace dorix
