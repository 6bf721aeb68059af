#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// What is left to a process that shuts itself in because it reads other people's bytes with other people's
/// code. Everything else is refused for good: other programs, other processes and their memory, files,
/// sockets, signals, privileges. Descriptors that are open by then stay usable. ARCHITECTURE.md has the
/// bounds in a table.
struct Confinement {
    // Files, and folders with all that is below them. One that does not exist is passed over.
    std::vector<std::filesystem::path> readable;
    // And readable. Who may write files loads no code any more, as he could have written it.
    std::vector<std::filesystem::path> writable;
    // The one program, if any, that the process may turn into, shut in as it is; what that reads, of the
    // system's libraries as well, has to be readable. It can be debugged by the user's other programs.
    std::filesystem::path mayBecome;
    std::optional<std::uint64_t> largestFile;  // bytes that one that is written may have
    bool mayConnect = false;                   // to servers over TCP, and look up their names
    bool mayStartThreads = false;
    std::uint64_t memory = 0;  // bytes of address space on top of what the process has by then; 0: unbounded
    std::uint64_t openFiles = 64;
    std::optional<std::uint64_t> processorSeconds;  // since the process began; it is killed then
};

/// Shuts the calling process in, which has no other thread yet. Returns what this kernel cannot do, a line
/// for the log each: all the rest holds. Throws std::system_error for anything else that fails, and the
/// process is to end then. Under AddressSanitizer the process must not look for leaks at its end, for which
/// it would start another.
[[nodiscard]] std::vector<std::string> confine(const Confinement& confinement);

/// What loading a shared library reads, of the system's.
std::vector<std::filesystem::path> systemLibraries();

/// What looking up a server's name and judging its certificate read.
std::vector<std::filesystem::path> networkSettings();

}  // namespace dorix
