#include "linux/jail/FileRules.h"

#include "linux/loop/FileDescriptor.h"

#include <fcntl.h>
#include <link.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>
#include <system_error>

namespace dorix {

namespace fs = std::filesystem;

namespace {

// The kernel's interface as of its sixth version; the headers of this system may be older. A kernel that is
// older than the header takes the longer record as long as what it does not know is zero.
struct Ruleset {
    std::uint64_t files = 0;
    std::uint64_t network = 0;
    std::uint64_t scoped = 0;
};

constexpr std::uint64_t readRights = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t truncateRight = 1ULL << 14U;
constexpr std::uint64_t deviceRight = 1ULL << 15U;
constexpr std::uint64_t writeRights = readRights | LANDLOCK_ACCESS_FS_WRITE_FILE |
                                      LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                                      LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                                      LANDLOCK_ACCESS_FS_REFER | truncateRight;
// What a rule for a file, as opposed to a folder, may speak of.
constexpr std::uint64_t fileRights =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | truncateRight;

constexpr std::uint64_t bindRight = 1ULL << 0U;
constexpr std::uint64_t connectRight = 1ULL << 1U;
constexpr std::uint64_t abstractSockets = 1ULL << 0U;
constexpr std::uint64_t signals = 1ULL << 1U;

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// 0 when there is none.
long landlockVersion() {
    const auto version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version < 0 ? 0 : version;
}

Ruleset everythingKnown(long version, bool mayConnect) {
    constexpr std::uint64_t firstVersion = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1U) - 1;
    Ruleset set{.files = firstVersion};
    if (version >= 2) set.files |= LANDLOCK_ACCESS_FS_REFER;
    if (version >= 3) set.files |= truncateRight;
    if (version >= 4) set.network = mayConnect ? bindRight : bindRight | connectRight;
    if (version >= 5) set.files |= deviceRight;
    if (version >= 6) set.scoped = abstractSockets | signals;
    return set;
}

void allowBelow(const FileDescriptor& rules, const fs::path& path, std::uint64_t rights) {
    const FileDescriptor file(::open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!file && (errno == ENOENT || errno == ENOTDIR)) return;
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0) fail(path.string());
    if (!S_ISDIR(status.st_mode)) rights &= fileRights;
    const landlock_path_beneath_attr rule{.allowed_access = rights, .parent_fd = file.get()};
    if (::syscall(SYS_landlock_add_rule, rules.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0) != 0) {
        fail("landlock: " + path.string());
    }
}

/// Of this program, and so of others on this system; it is started as they are.
fs::path loader() {
    fs::path found;
    const auto look = [](dl_phdr_info* program, std::size_t, void* into) {
        const std::span headers(program->dlpi_phdr, program->dlpi_phnum);
        const auto name = std::ranges::find(headers, ElfW(Word){PT_INTERP}, &ElfW(Phdr)::p_type);
        if (name != headers.end())
            *static_cast<fs::path*>(into) = reinterpret_cast<const char*>(program->dlpi_addr + name->p_vaddr);
        return 1;  // the first one is the program
    };
    ::dl_iterate_phdr(look, &found);
    return found;
}

void allowBecoming(const FileDescriptor& rules, const fs::path& program) {
    constexpr std::uint64_t rights = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE;
    for (const auto& file : {program, loader()}) allowBelow(rules, file, rights);
}

}  // namespace

bool restrictFiles(const Confinement& confinement) {
    const auto version = landlockVersion();
    if (version == 0) return false;
    const auto set = everythingKnown(version, confinement.mayConnect);
    const FileDescriptor rules(static_cast<int>(::syscall(SYS_landlock_create_ruleset, &set, sizeof set, 0)));
    if (!rules) fail("landlock");
    for (const auto& path : confinement.readable) allowBelow(rules, path, readRights & set.files);
    for (const auto& path : confinement.writable) allowBelow(rules, path, writeRights & set.files);
    if (!confinement.mayBecome.empty()) allowBecoming(rules, confinement.mayBecome);
    if (::syscall(SYS_landlock_restrict_self, rules.get(), 0) != 0) fail("landlock");
    return true;
}

}  // namespace dorix
