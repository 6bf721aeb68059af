#include "base/Error.h"
#include "base/Log.h"
#include "base/Version.h"
#include "linux/jail/Confinement.h"
#include "recogniser/program/Channel.h"
#include "recogniser/program/Engines.h"
#include "recogniser/program/Program.h"
#include "recogniser/unpack/Unpack.h"
#include "recognition/ModelRequest.h"
#include "recognition/UnpackOrder.h"

#include <sys/prctl.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

using namespace dorix;
using namespace dorix::recogniser;

// What the program leaves open for a helper.
constexpr int channelDescriptor = 3;

/// What the files of the model may take in memory, with what the engine computes: a model that asks for more
/// is no model.
std::uint64_t memoryFor(const ModelRequest& model) {
    std::uint64_t bytes = 512ULL << 20U;
    for (const auto& [role, file] : model.files) {
        std::error_code error;
        const auto size = std::filesystem::file_size(model.folder / file, error);
        if (!error) bytes += 5 * size;
    }
    return bytes;
}

/// Leaves this process what the model needs, before anything of it is read.
void shutIn(const ModelRequest& model) {
    const bool asksServer = !model.server.address.empty();
    Confinement confinement{.readable = {model.folder},
                            .mayConnect = asksServer,
                            .mayStartThreads = asksServer,
                            .memory = memoryFor(model)};
    const auto add = [&confinement](const std::vector<std::filesystem::path>& more) {
        confinement.readable.insert(confinement.readable.end(), more.begin(), more.end());
    };
    if (!model.engineFolder.empty()) add({model.engineFolder, "/proc/cpuinfo", "/sys/devices/system/cpu"});
    // Looking up a name may load one as well.
    if (asksServer || !model.engineFolder.empty()) add(systemLibraries());
    if (asksServer) add(networkSettings());
    for (const auto& complaint : confine(confinement)) logLine(complaint);
}

/// The only thing that this process is for, then.
int obey(Channel& channel, const UnpackOrder& order) {
    constexpr std::uint64_t memory = 256ULL << 20U;
    try {
        const Confinement confinement{.readable = {order.archive},
                                      .writable = {order.folder},
                                      .largestFile = order.largest,
                                      .memory = memory,
                                      .processorSeconds = 100};
        for (const auto& complaint : confine(confinement)) logLine(complaint);
        unpack(order);
        channel.send({Frame::Kind::unpacked, {}});
        return 0;
    } catch (const std::exception&) {
        channel.send({Frame::Kind::refused, localizedDescription(std::current_exception())});
        return 1;
    }
}

/// Null where there is none, after telling why.
std::unique_ptr<Engine> loadEngine(Channel& channel, const ModelRequest& model) {
    try {
        shutIn(model);
        return makeEngine(model);
    } catch (const std::exception&) {
        channel.send({Frame::Kind::refused, localizedDescription(std::current_exception())});
        return nullptr;
    }
}

constexpr const char* purpose = "dorix-recogniser is started by dorix, and takes no arguments\n";

/// Whoever gives arguments is a person.
int answer(std::string_view argument) {
    if (argument == "--help" || argument == "-h") return std::fputs(purpose, stdout) < 0 ? 1 : 0;
    if (argument != "--version" && argument != "-V") {
        std::fputs(purpose, stderr);
        return 2;
    }
    return std::printf("dorix-recogniser %s\n", std::string(version()).c_str()) < 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) return answer(argv[1]);
    // Also while an engine is at work, which does not listen.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    setLogName("dorix-recogniser");
    Channel channel(channelDescriptor);
    const auto wish = channel.next();
    const auto order = wish.kind == Frame::Kind::unpack ? unpackOrderIn(wish.body) : std::nullopt;
    if (order) return obey(channel, *order);
    const auto model = modelRequestIn(wish.body);
    if (!model) return 1;
    const auto engine = loadEngine(channel, *model);
    if (!engine) return 1;
    channel.send({Frame::Kind::ready, {}});
    try {
        Program(channel, *engine).run();
    } catch (const Refusal& refusal) {
        channel.send({Frame::Kind::refused, refusal.localizedDescription()});
        return 1;
    } catch (const std::exception& error) {
        logLine(localizedDescription(std::current_exception()));
        return 1;
    }
}
