#include "linux/jail/SystemCallFilter.h"

#include <fcntl.h>
#include <linux/sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <system_error>

namespace dorix {

namespace {

// Of the process itself: its memory, time, signals, and what it has open already.
constexpr std::array always{SCMP_SYS(arch_prctl),
                            SCMP_SYS(brk),
                            SCMP_SYS(clock_getres),
                            SCMP_SYS(clock_gettime),
                            SCMP_SYS(clock_nanosleep),
                            SCMP_SYS(close),
                            SCMP_SYS(close_range),
                            SCMP_SYS(dup),
                            SCMP_SYS(dup2),
                            SCMP_SYS(dup3),
                            SCMP_SYS(epoll_create1),
                            SCMP_SYS(epoll_ctl),
                            SCMP_SYS(epoll_pwait),
                            SCMP_SYS(epoll_wait),
                            SCMP_SYS(eventfd2),
                            SCMP_SYS(exit),
                            SCMP_SYS(exit_group),
                            SCMP_SYS(fadvise64),
                            SCMP_SYS(futex),
                            SCMP_SYS(getcpu),
                            SCMP_SYS(getegid),
                            SCMP_SYS(geteuid),
                            SCMP_SYS(getgid),
                            SCMP_SYS(getpid),
                            SCMP_SYS(getppid),
                            SCMP_SYS(getrandom),
                            SCMP_SYS(getrusage),
                            SCMP_SYS(gettid),
                            SCMP_SYS(gettimeofday),
                            SCMP_SYS(getuid),
                            SCMP_SYS(lseek),
                            SCMP_SYS(madvise),
                            SCMP_SYS(mremap),
                            SCMP_SYS(munmap),
                            SCMP_SYS(nanosleep),
                            SCMP_SYS(pipe),
                            SCMP_SYS(pipe2),
                            SCMP_SYS(poll),
                            SCMP_SYS(ppoll),
                            SCMP_SYS(pread64),
                            SCMP_SYS(preadv),
                            SCMP_SYS(pselect6),
                            SCMP_SYS(read),
                            SCMP_SYS(readv),
                            SCMP_SYS(recvfrom),
                            SCMP_SYS(recvmsg),
                            SCMP_SYS(restart_syscall),
                            SCMP_SYS(rseq),
                            SCMP_SYS(rt_sigaction),
                            SCMP_SYS(rt_sigprocmask),
                            SCMP_SYS(rt_sigreturn),
                            SCMP_SYS(sched_getaffinity),
                            SCMP_SYS(sched_yield),
                            SCMP_SYS(select),
                            SCMP_SYS(sendmsg),
                            SCMP_SYS(sendto),
                            SCMP_SYS(set_robust_list),
                            SCMP_SYS(set_tid_address),
                            SCMP_SYS(shutdown),
                            SCMP_SYS(sigaltstack),
                            SCMP_SYS(sysinfo),
                            SCMP_SYS(time),
                            SCMP_SYS(uname),
                            SCMP_SYS(write),
                            SCMP_SYS(writev)};

// Whether files are there, and how large they are: that much every file tells.
constexpr std::array lookingAtFiles{SCMP_SYS(access),     SCMP_SYS(faccessat),  SCMP_SYS(faccessat2),
                                    SCMP_SYS(fstat),      SCMP_SYS(fstatfs),    SCMP_SYS(getcwd),
                                    SCMP_SYS(getdents64), SCMP_SYS(lstat),      SCMP_SYS(newfstatat),
                                    SCMP_SYS(readlink),   SCMP_SYS(readlinkat), SCMP_SYS(stat),
                                    SCMP_SYS(statfs),     SCMP_SYS(statx)};

// Where files may be written, landlock says which.
constexpr std::array writingFiles{
    SCMP_SYS(fallocate), SCMP_SYS(fchmod),  SCMP_SYS(fdatasync), SCMP_SYS(fsync),     SCMP_SYS(ftruncate),
    SCMP_SYS(mkdir),     SCMP_SYS(mkdirat), SCMP_SYS(open),      SCMP_SYS(openat),    SCMP_SYS(pwrite64),
    SCMP_SYS(pwritev),   SCMP_SYS(rename),  SCMP_SYS(renameat),  SCMP_SYS(renameat2), SCMP_SYS(rmdir),
    SCMP_SYS(unlink),    SCMP_SYS(unlinkat)};

constexpr std::array connecting{SCMP_SYS(connect),    SCMP_SYS(getpeername), SCMP_SYS(getsockname),
                                SCMP_SYS(getsockopt), SCMP_SYS(recvmmsg),    SCMP_SYS(sendmmsg),
                                SCMP_SYS(setsockopt), SCMP_SYS(socketpair)};

// Nothing that is put into a jail has a use for these: whoever calls them has taken it over.
constexpr std::array signsOfAnIntruder{SCMP_SYS(add_key),
                                       SCMP_SYS(bpf),
                                       SCMP_SYS(chroot),
                                       SCMP_SYS(execveat),
                                       SCMP_SYS(finit_module),
                                       SCMP_SYS(init_module),
                                       SCMP_SYS(io_uring_setup),
                                       SCMP_SYS(kexec_load),
                                       SCMP_SYS(keyctl),
                                       SCMP_SYS(mount),
                                       SCMP_SYS(move_mount),
                                       SCMP_SYS(open_by_handle_at),
                                       SCMP_SYS(perf_event_open),
                                       SCMP_SYS(pidfd_getfd),
                                       SCMP_SYS(pivot_root),
                                       SCMP_SYS(process_vm_readv),
                                       SCMP_SYS(process_vm_writev),
                                       SCMP_SYS(ptrace),
                                       SCMP_SYS(reboot),
                                       SCMP_SYS(request_key),
                                       SCMP_SYS(setns),
                                       SCMP_SYS(umount2),
                                       SCMP_SYS(unshare),
                                       SCMP_SYS(userfaultfd)};

/// An argument of a system call, by its place, that has exactly these of the bits looked at.
scmp_arg_cmp bits(unsigned place, std::uint64_t lookedAt, std::uint64_t set) {
    return {.arg = place, .op = SCMP_CMP_MASKED_EQ, .datum_a = lookedAt, .datum_b = set};
}

/// One that is an int, of which the upper half of the register is nobody's.
template <std::integral Int>
scmp_arg_cmp is(unsigned place, Int value) {
    return bits(place, ~std::uint32_t{0}, static_cast<std::uint32_t>(value));
}

class Filter {
 public:
    Filter() : filter_(seccomp_init(SCMP_ACT_ERRNO(EPERM))) {
        if (!filter_) check(-ENOMEM);
        // Calls in another architecture's ways, which the rules do not speak of.
        check(seccomp_attr_set(filter_.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS));
    }

    void add(std::uint32_t action, std::span<const int> calls) {
        for (const auto call : calls) add(action, call, {});
    }
    void add(std::uint32_t action, int call, std::initializer_list<scmp_arg_cmp> conditions) {
        check(seccomp_rule_add_array(filter_.get(), action, call, static_cast<unsigned>(conditions.size()),
                                     std::data(conditions)));
    }
    /// Where all the conditions hold. A call may be allowed under several sets of them.
    void allow(int call, std::initializer_list<scmp_arg_cmp> conditions) {
        add(SCMP_ACT_ALLOW, call, conditions);
    }

    void load() { check(seccomp_load(filter_.get())); }

 private:
    struct Release {
        void operator()(void* filter) const { seccomp_release(filter); }
    };

    static void check(int result) {
        if (result < 0) throw std::system_error(-result, std::generic_category(), "seccomp");
    }

    std::unique_ptr<void, Release> filter_;
};

void allowMemory(Filter& filter, bool mayLoadCode) {
    filter.allow(SCMP_SYS(mmap), {bits(2, PROT_EXEC, 0)});
    filter.allow(SCMP_SYS(mprotect), {bits(2, PROT_EXEC, 0)});
    // Code comes from files, through the loader: memory that is written to is never run.
    if (!mayLoadCode) return;
    filter.allow(SCMP_SYS(mmap), {bits(2, PROT_EXEC | PROT_WRITE, PROT_EXEC), bits(3, MAP_ANONYMOUS, 0)});
}

void allowItself(Filter& filter) {
    // How a failed assertion ends.
    filter.allow(SCMP_SYS(tgkill), {is(0, ::getpid())});
    // To ask for its own limits, not to set any.
    filter.allow(SCMP_SYS(prlimit64), {is(0, 0), bits(2, ~std::uint64_t{0}, 0)});
    filter.allow(SCMP_SYS(prctl), {is(0, PR_SET_NAME)});
    filter.allow(SCMP_SYS(prctl), {is(0, PR_GET_NAME)});
    // Not those that have somebody sent a signal.
    for (const auto command : {F_DUPFD, F_DUPFD_CLOEXEC, F_GETFD, F_SETFD, F_GETFL, F_SETFL}) {
        filter.allow(SCMP_SYS(fcntl), {is(1, command)});
    }
    // Whether it is a terminal; not to type into one.
    for (const auto request : {TCGETS, FIONREAD}) filter.allow(SCMP_SYS(ioctl), {is(1, request)});
}

void allowFiles(Filter& filter, bool mayWrite) {
    filter.add(SCMP_ACT_ALLOW, lookingAtFiles);
    if (mayWrite) {
        filter.add(SCMP_ACT_ALLOW, writingFiles);
        return;
    }
    // For kernels that know nothing better, as well.
    constexpr int changing = O_ACCMODE | O_CREAT | O_TRUNC;
    filter.allow(SCMP_SYS(open), {bits(1, changing, O_RDONLY)});
    filter.allow(SCMP_SYS(openat), {bits(2, changing, O_RDONLY)});
}

void allowServers(Filter& filter) {
    constexpr std::uint64_t typeOfSocket = ~std::uint32_t{SOCK_CLOEXEC | SOCK_NONBLOCK};
    filter.add(SCMP_ACT_ALLOW, connecting);
    // Not those of this computer's services: the session bus, the display.
    for (const auto family : {AF_INET, AF_INET6}) {
        filter.allow(SCMP_SYS(socket), {is(0, family), bits(1, typeOfSocket, SOCK_STREAM)});
        filter.allow(SCMP_SYS(socket), {is(0, family), bits(1, typeOfSocket, SOCK_DGRAM)});
    }
    filter.allow(SCMP_SYS(ioctl), {is(1, FIONBIO)});
}

void allowThreads(Filter& filter) {
    constexpr std::uint64_t thread = CLONE_THREAD | CLONE_VM | CLONE_SIGHAND;
    filter.allow(SCMP_SYS(clone), {bits(0, thread, thread)});
}

}  // namespace

void restrictSystemCalls(const Confinement& confinement) {
    Filter filter;
    filter.add(SCMP_ACT_ALLOW, always);
    filter.add(SCMP_ACT_KILL_PROCESS, signsOfAnIntruder);
    // Where it may turn into another program, landlock says into which.
    filter.add(confinement.mayBecome.empty() ? SCMP_ACT_KILL_PROCESS : SCMP_ACT_ALLOW, SCMP_SYS(execve), {});
    // What they ask for lies in memory, where the filter cannot look; programs know another way.
    filter.add(SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), {});
    filter.add(SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(openat2), {});
    allowMemory(filter, confinement.writable.empty());
    allowItself(filter);
    allowFiles(filter, !confinement.writable.empty());
    if (confinement.mayConnect) allowServers(filter);
    if (confinement.mayStartThreads) allowThreads(filter);
    filter.load();
}

}  // namespace dorix
