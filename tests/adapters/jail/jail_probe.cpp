// Shuts itself in and tries to get out, in one way a run:
//
//   jail_probe FOLDER PORT GRANTS ATTEMPT
//
// FOLDER has in/, out/ and elsewhere/; of GRANTS "-" is none at all, "free" leaves it outside, and the
// letters b, c, t and w let it become another program, connect, start threads and write to out/. It ends with
// 0 when it got what it wanted, with 1 when not.

#include "linux/jail/Confinement.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t megabyte = 1UZ << 20U;

std::string folder;  // NOLINT: of a program of one page
std::uint16_t port;  // NOLINT

bool opens(const std::string& path, int flags) { return ::open(path.c_str(), flags | O_CLOEXEC, 0600) >= 0; }

template <typename Address>
bool connectsTo(const Address& address, std::size_t length, int type) {
    const int fd = ::socket(reinterpret_cast<const sockaddr*>(&address)->sa_family, type, 0);
    return fd >= 0 &&
           ::connect(fd, reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(length)) == 0 &&
           ::send(fd, "x", 1, 0) == 1;
}

sockaddr_in thisComputer(std::uint16_t at) {
    return {.sin_family = AF_INET, .sin_port = htons(at), .sin_addr = {htonl(INADDR_LOOPBACK)}};
}

bool connects(int type) { return connectsTo(thisComputer(port), sizeof(sockaddr_in), type); }

/// A name that begins with @ is an abstract one.
bool connectsLocally(std::string name) {
    sockaddr_un address{.sun_family = AF_UNIX};
    if (name.front() == '@') name.front() = '\0';
    std::memcpy(address.sun_path, name.data(), name.size());
    return connectsTo(address, offsetof(sockaddr_un, sun_path) + name.size(), SOCK_STREAM);
}

bool listens() {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    const auto address = thisComputer(0);
    return fd >= 0 && ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool becomes(std::string name) {
    std::array<char*, 2> arguments{name.data(), nullptr};
    ::execv(name.c_str(), arguments.data());
    return false;
}

bool forks() {
    const auto child = ::fork();
    if (child == 0) ::_exit(0);
    return child > 0 && ::waitpid(child, nullptr, 0) == child;
}

bool startsThread() {
    pthread_t thread{};
    if (::pthread_create(&thread, nullptr, [](void* it) { return it; }, nullptr) != 0) return false;
    return ::pthread_join(thread, nullptr) == 0;
}

bool maps(std::size_t bytes, int protection, int flags) {
    return ::mmap(nullptr, bytes, protection, flags | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
}

bool makesCodeOfData() {
    void* page = ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return page != MAP_FAILED && ::mprotect(page, 4096, PROT_READ | PROT_EXEC) == 0;
}

bool liftsItsLimit(int resource) {
    rlimit bounds{};
    ::getrlimit(static_cast<__rlimit_resource>(resource), &bounds);
    return ::setrlimit(static_cast<__rlimit_resource>(resource), &bounds) == 0;
}

bool keepsItsWork() {
    // Loaded, read, computed and told: what a recogniser does all day.
    std::string block(8 * megabyte, 'x');
    return opens(folder + "/in/file", O_RDONLY) && ::opendir((folder + "/in").c_str()) != nullptr &&
           ::write(STDERR_FILENO, block.data(), 1) == 1;
}

bool writes(off_t bytes) {
    const int fd = ::open((folder + "/out/written").c_str(), O_WRONLY | O_CREAT, 0600);
    return fd >= 0 && ::ftruncate(fd, bytes) == 0;
}

const std::map<std::string_view, std::function<bool()>>& attempts() {
    static const std::map<std::string_view, std::function<bool()>> all{
        {"its work", keepsItsWork},
        {"read the users", [] { return opens("/etc/passwd", O_RDONLY); }},
        {"list the homes", [] { return ::opendir("/root") != nullptr || ::opendir("/home") != nullptr; }},
        {"read elsewhere", [] { return opens(folder + "/elsewhere/file", O_RDONLY); }},
        {"write what it reads", [] { return opens(folder + "/in/file", O_WRONLY); }},
        {"empty what it reads", [] { return opens(folder + "/in/empty", O_RDONLY | O_TRUNC); }},
        {"change rights", [] { return ::chmod((folder + "/in/file").c_str(), 0600) == 0; }},
        {"make a file", [] { return opens(folder + "/out/made", O_WRONLY | O_CREAT); }},
        {"make a file elsewhere", [] { return opens(folder + "/elsewhere/made", O_WRONLY | O_CREAT); }},
        {"remove a file", [] { return ::unlink((folder + "/out/unwanted").c_str()) == 0; }},
        {"make a link", [] { return ::symlink("/etc", (folder + "/out/link").c_str()) == 0; }},
        {"connect", [] { return connects(SOCK_STREAM); }},
        {"send a datagram", [] { return connects(SOCK_DGRAM); }},
        {"listen", listens},
        {"connect to a service", [] { return connectsLocally(folder + "/socket"); }},
        {"connect to an abstract service", [] { return connectsLocally("@" + folder); }},
        {"run a program", [] { return becomes("/bin/true"); }},
        {"run another program", [] { return becomes("/bin/echo"); }},
        {"fork", forks},
        {"start a thread", startsThread},
        {"be debugged", [] { return ::ptrace(PTRACE_TRACEME) == 0; }},
        {"signal its parent", [] { return ::kill(::getppid(), 0) == 0; }},
        {"read its parent", [] { return opens("/proc/" + std::to_string(::getppid()) + "/mem", O_RDONLY); }},
        {"be read", [] { return opens("/proc/self/mem", O_RDONLY); }},
        {"load a library", [] { return ::dlopen("libz.so.1", RTLD_NOW) != nullptr; }},
        {"write a file", [] { return writes(1000); }},
        {"write a large file", [] { return writes(megabyte); }},
        {"load a library from elsewhere",
         [] { return ::dlopen((folder + "/elsewhere/library.so").c_str(), RTLD_NOW) != nullptr; }},
        {"take memory", [] { return maps(512 * megabyte, PROT_READ | PROT_WRITE, MAP_PRIVATE); }},
        {"share memory", [] { return maps(512 * megabyte, PROT_READ | PROT_WRITE, MAP_SHARED); }},
        {"make memory to run", [] { return maps(4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE); }},
        {"make code of data", makesCodeOfData},
        {"set limits", [] { return liftsItsLimit(RLIMIT_NOFILE); }},
    };
    return all;
}

void shutIn(std::string_view grants) {
    dorix::Confinement confinement{.readable = dorix::systemLibraries(), .memory = 128 * megabyte};
    confinement.readable.emplace_back(folder + "/in");
    confinement.readable.emplace_back(folder + "/not there");
    confinement.mayConnect = grants.contains('c');
    confinement.mayStartThreads = grants.contains('t');
    if (grants.contains('b')) confinement.mayBecome = "/bin/true";
    if (grants.contains('w')) {
        confinement.writable.emplace_back(folder + "/out");
        confinement.largestFile = 1000;
    }
    for (const auto& line : dorix::confine(confinement)) std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace

int main(int, char** arguments) {
    folder = arguments[1];
    port = static_cast<std::uint16_t>(std::atoi(arguments[2]));
    try {
        const std::string_view grants = arguments[3];
        if (grants != "free") shutIn(grants);
        return attempts().at(arguments[4])() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
}
