#include "linux/jail/Confinement.h"

#include "linux/jail/FileRules.h"
#include "linux/jail/SystemCallFilter.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace dorix {

namespace fs = std::filesystem;

namespace {

// Their shadow memory takes all the address space there is, and their own thread runs from the start.
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

void check(int result, const char* what) {
    if (result != 0) throw std::system_error(errno, std::generic_category(), what);
}

/// For good: never above what holds already.
void limit(__rlimit_resource resource, std::uint64_t value, const char* name) {
    rlimit bounds{};
    check(::getrlimit(resource, &bounds), name);
    bounds.rlim_max = std::min<rlim_t>(bounds.rlim_max, value);
    bounds.rlim_cur = std::min(bounds.rlim_cur, bounds.rlim_max);
    check(::setrlimit(resource, &bounds), name);
}

std::uint64_t addressSpaceInUse() {
    std::uint64_t pages = 0;
    if (!(std::ifstream("/proc/self/statm") >> pages)) throw std::runtime_error("/proc/self/statm");
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

void limitResources(const Confinement& confinement) {
    limit(RLIMIT_CORE, 0, "core");
    limit(RLIMIT_MEMLOCK, 0, "locked memory");
    limit(RLIMIT_NOFILE, confinement.openFiles, "open files");
    // It counts what all processes of the user have, so it is of use only where none may be added.
    if (!confinement.mayStartThreads) limit(RLIMIT_NPROC, 0, "processes");
    if (confinement.largestFile) {
        // A write beyond it fails, and does not end the process.
        if (std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR) check(-1, "signal");
        limit(RLIMIT_FSIZE, *confinement.largestFile, "file size");
    }
    if (confinement.processorSeconds) limit(RLIMIT_CPU, *confinement.processorSeconds, "processor time");
    // The address space: other bounds leave out what is shared, or mapped from files.
    if (confinement.memory != 0 && !isSanitized) {
        limit(RLIMIT_AS, addressSpaceInUse() + confinement.memory, "memory");
    }
}

/// The rules for files hold for the thread that makes them and what it starts: another would stay outside.
void demandOneThread() {
    const auto threads = std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
    if (threads != 1 && !isSanitized) throw std::logic_error("a process with threads cannot be confined");
}

}  // namespace

std::vector<std::string> confine(const Confinement& confinement) {
    std::vector<std::string> missing;
    demandOneThread();
    limitResources(confinement);
    if (isSanitized && confinement.memory != 0) missing.emplace_back("no limit on memory under a sanitizer");
    check(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), "no new privileges");
    if (!restrictFiles(confinement)) {
        missing.emplace_back("the kernel has no landlock: the user's files are within reach");
    }
    // Nor may other programs of the user look into it.
    check(::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0), "not dumpable");
    restrictSystemCalls(confinement);
    return missing;
}

std::vector<fs::path> systemLibraries() {
    return {"/etc/ld.so.cache", "/lib", "/lib64", "/usr/lib", "/usr/lib64", "/usr/local/lib"};
}

/// Files, not all of /etc: one that is replaced afterwards is not seen any more, until the process starts
/// anew.
std::vector<fs::path> networkSettings() {
    return {"/etc/ca-certificates",
            "/etc/gai.conf",
            "/etc/host.conf",
            "/etc/hosts",
            "/etc/nsswitch.conf",
            "/etc/pki/tls",
            "/etc/resolv.conf",
            "/etc/services",
            "/etc/ssl/certs",
            "/etc/ssl/openssl.cnf",
            "/run/NetworkManager/resolv.conf",
            "/run/systemd/resolve",
            "/usr/local/share/ca-certificates",
            "/usr/share/ca-certificates"};
}

}  // namespace dorix
