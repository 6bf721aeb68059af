#include "adapters/dbus/TestBus.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace dorix {

namespace fs = std::filesystem;

namespace {

/// Without folders of services: nothing that is installed is started.
std::string configuration(const fs::path& socket) {
    return "<busconfig><type>session</type><listen>unix:path=" + socket.string() +
           "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
           "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>";
}

}  // namespace

TestBus::TestBus() {
    auto pattern = (fs::temp_directory_path() / "dorix-bus-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    const auto file = folder_ / "session.conf";
    std::ofstream(file) << configuration(folder_ / "bus");
    std::array<int, 2> ready{};
    if (pipe(ready.data()) != 0) throw std::runtime_error("no pipe");
    const std::string config = "--config-file=" + file.string();
    const std::string print = "--print-address=" + std::to_string(ready[1]);
    daemon_ = fork();
    if (daemon_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // It complains where it may not raise its limits.
        if (!std::freopen("/dev/null", "w", stderr)) _exit(127);
        execlp("dbus-daemon", "dbus-daemon", "--nofork", "--nopidfile", config.c_str(), print.c_str(),
               nullptr);
        _exit(127);
    }
    close(ready[1]);
    char byte = 0;
    while (read(ready[0], &byte, 1) == 1 && byte != '\n') continue;
    close(ready[0]);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + (folder_ / "bus").string()).c_str(), 1);
}

TestBus::~TestBus() {
    kill();
    fs::remove_all(folder_);
}

void TestBus::kill() {
    if (daemon_ <= 0) return;
    ::kill(daemon_, SIGKILL);
    waitpid(daemon_, nullptr, 0);
    daemon_ = -1;
}

TestPeer::TestPeer(EventLoop& loop, const char* name)
    : loop_(loop), bus_(BusConnection::openSession(loop.main, loop.main, [] {})) {
    bus_->awaitReady(5);
    if (!name) return;
    call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
         [name](sd_bus_message* message) { sd_bus_message_append(message, "su", name, 0); });
}

std::string TestPeer::call(const std::string& destination, const std::string& path, const char* interface,
                           const char* member, const std::function<void(sd_bus_message*)>& fill,
                           const std::function<void(sd_bus_message*)>& read) {
    const auto request = bus_->newCall(destination, path, interface, member);
    if (fill) fill(request.get());
    bool done = false;
    std::string error;
    bus_->callLater(request, [&](sd_bus_message* reply) {
        done = true;
        const auto* failure = reply ? sd_bus_message_get_error(reply) : nullptr;
        if (failure) {
            error = failure->name;
        } else if (read) {
            read(reply);
        }
    });
    return loop_.runUntil([&] { return done; }) ? error : "timeout";
}

}  // namespace dorix
