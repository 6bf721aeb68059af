#include "adapters/atspi/PrivateSession.h"

#include <spawn.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace dorix {

namespace {

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry) {
        const std::string_view text(*entry);
        if (!changes.contains(std::string(text.substr(0, text.find('='))))) result.emplace_back(text);
    }
    for (const auto& [name, value] : changes) {
        if (!value.empty()) result.emplace_back(name).append("=").append(value);
    }
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (auto& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

std::string readLine(int fd) {
    std::string line;
    for (char c = 0; read(fd, &c, 1) == 1 && c != '\n';) line.push_back(c);
    return line;
}

/// Asks on a bus and waits; the test's setting up may block.
class BusCall {
 public:
    BusCall(const std::string& address, const char* destination, const char* path, const char* interface,
            const char* member, const char* argument = nullptr) {
        sd_bus_new(&bus_);
        sd_bus_set_address(bus_, address.c_str());
        sd_bus_set_bus_client(bus_, 1);
        if (sd_bus_start(bus_) < 0 || sd_bus_call_method(bus_, destination, path, interface, member, nullptr,
                                                         &reply_, argument ? "s" : nullptr, argument) < 0) {
            throw std::runtime_error(member);
        }
    }
    BusCall(const BusCall&) = delete;
    BusCall& operator=(const BusCall&) = delete;
    ~BusCall() {
        sd_bus_message_unref(reply_);
        sd_bus_flush_close_unref(bus_);
    }
    sd_bus_message* reply() const { return reply_; }

 private:
    sd_bus* bus_ = nullptr;
    sd_bus_message* reply_ = nullptr;
};

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::map<std::string, std::string>& environment, int inheritedFd) {
    auto arguments = command;
    auto variables = environmentWith(environment);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (inheritedFd >= 0) posix_spawn_file_actions_adddup2(&actions, inheritedFd, inheritedFd);
    const int error = posix_spawnp(&pid_, arguments.front().c_str(), &actions, nullptr,
                                   pointers(arguments).data(), pointers(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error("cannot start " + command.front());
}

ChildProcess::~ChildProcess() {
    if (pid_ < 0) return;
    signal(SIGKILL);
    wait();
}

int ChildProcess::wait() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return status;
}

PrivateSession::PrivateSession() {
    std::string name = std::filesystem::temp_directory_path() / "dorix-atspi-XXXXXX";
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    folder_ = name;
    std::array<int, 2> line{};
    if (pipe(line.data()) != 0) throw std::runtime_error("no pipe");
    // Without a display the accessibility bus leaves no trace on the screen's root window.
    bus_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                 "--print-address=" + std::to_string(line[1])},
        std::map<std::string, std::string>{{"DISPLAY", ""},
                                           {"DBUS_SESSION_BUS_ADDRESS", ""},
                                           {"AT_SPI_BUS_ADDRESS", ""},
                                           {"XDG_RUNTIME_DIR", folder_},
                                           {"HOME", folder_},
                                           {"GSETTINGS_BACKEND", "memory"}},
        line[1]);
    close(line[1]);
    address_ = readLine(line[0]);
    close(line[0]);
}

PrivateSession::~PrivateSession() {
    bus_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string PrivateSession::accessibilityAddress() const {
    const BusCall call(address_, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
    const char* address = "";
    sd_bus_message_read(call.reply(), "s", &address);
    return address;
}

std::map<std::string, std::string> PrivateSession::applicationEnvironment() const {
    return {{"DBUS_SESSION_BUS_ADDRESS", address_}, {"AT_SPI_BUS_ADDRESS", accessibilityAddress()},
            {"XDG_RUNTIME_DIR", folder_},           {"HOME", folder_},
            {"GSETTINGS_BACKEND", "memory"},        {"NO_AT_BRIDGE", ""}};
}

pid_t PrivateSession::accessibilityBus() const {
    const BusCall call(accessibilityAddress(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                       "org.freedesktop.DBus", "GetConnectionUnixProcessID", "org.freedesktop.DBus");
    std::uint32_t process = 0;
    sd_bus_message_read_basic(call.reply(), 'u', &process);
    return static_cast<pid_t>(process);
}

}  // namespace dorix
