#include "reader/program/JailedChild.h"

#include "base/Log.h"
#include "linux/loop/FileDescriptor.h"
#include "reader/program/DocumentFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <exception>
#include <system_error>
#include <utility>

namespace dorix::reader {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t memory = 512ULL << 20U;  // bytes
constexpr std::uint64_t processorSeconds = 20;

fs::path placeOf(const char* program) {
    for (const auto* folder : {"/usr/bin", "/usr/local/bin", "/bin"}) {
        auto place = fs::path(folder) / program;
        if (::access(place.c_str(), X_OK) == 0) return place;
    }
    throw NotNow(std::string(program) + " is not installed");
}

/// As exec wants them; they go with the texts.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

void end(ReadingEnd how) { ::_exit(static_cast<int>(how)); }

void shutIn(Confinement confinement, Complaints complaints) {
    confinement.memory = memory;
    if (!confinement.processorSeconds) confinement.processorSeconds = processorSeconds;
    const auto missing = confine(confinement);
    if (complaints == Complaints::known) return;
    for (const auto& line : missing) logLine(line);
}

void become(const Program& program, Complaints complaints, const std::function<void()>& prepare) {
    const auto place = placeOf(program.name).string();
    std::vector<std::string> command{place};
    command.insert(command.end(), program.arguments.begin(), program.arguments.end());
    std::vector<std::string> variables{"LC_ALL=C.UTF-8", "HOME=/"};
    variables.insert(variables.end(), program.environment.begin(), program.environment.end());
    const auto arguments = pointersTo(command);
    const auto environment = pointersTo(variables);

    Confinement confinement{
        .readable = systemLibraries(), .mayBecome = place, .processorSeconds = program.processorSeconds};
    confinement.readable.insert(confinement.readable.end(), program.data.begin(), program.data.end());
    const FileDescriptor nothing(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    shutIn(std::move(confinement), complaints);
    prepare();
    ::dup2(nothing.get(), STDERR_FILENO);
    ::execve(place.c_str(), arguments.data(), environment.data());
    end(ReadingEnd::notNow);
}

void keepOnly(int fd) {
    if (::dup2(fd, STDIN_FILENO) < 0) throw NotNow(std::generic_category().message(errno));
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
}

void writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = ::write(fd, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        // Who reads has enough.
        if (count < 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void readInto(int output, const std::function<void()>& read) {
    if (::dup2(output, STDOUT_FILENO) < 0) end(ReadingEnd::notNow);
    try {
        read();
    } catch (const NotNow& reason) {
        writeAll(STDOUT_FILENO, reason.localizedDescription());
        end(ReadingEnd::notNow);
    } catch (const std::exception&) {
        // Whatever it is that it does: it has no text.
        end(ReadingEnd::noText);
    }
    end(ReadingEnd::all);
}

}  // namespace dorix::reader
