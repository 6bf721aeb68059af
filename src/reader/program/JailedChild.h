#pragma once

#include "linux/jail/Confinement.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix::reader {

/// How a process that reads for the helper ends, beside dying.
enum class ReadingEnd : int {
    all = 0,
    noText = 1,
    notNow = 113,  // and the output is why; none of the programs that it may turn into ends so
};

enum class Complaints { logged, known };

[[noreturn]] void end(ReadingEnd how);

/// Shuts the process in, with a bound on memory and, where it has none yet, the usual one on time.
void shutIn(Confinement confinement, Complaints complaints);

/// A program of the system that reads from its standard input.
struct Program {
    const char* name;
    std::vector<std::string> arguments;
    std::vector<std::filesystem::path> data;
    std::vector<std::string> environment{};           // beside language and home
    std::optional<std::uint64_t> processorSeconds{};  // where it may have others than usual
};

/// Turns the process into the program, shut in, with nothing open but what the standard has. `prepare` runs
/// when it is shut in already. Throws NotNow where it is not installed.
[[noreturn]] void become(
    const Program& program, Complaints complaints, const std::function<void()>& prepare = [] {});

/// Makes `fd` the standard input, and leaves open nothing but what the standard has.
void keepOnly(int fd);

/// To a descriptor, as far as somebody takes it.
void writeAll(int fd, std::string_view bytes);

/// Has `read` write to `output` as its standard output, and ends as that comes out.
[[noreturn]] void readInto(int output, const std::function<void()>& read);

}  // namespace dorix::reader
