#include "base/Error.h"
#include "base/Log.h"
#include "recogniser/program/Channel.h"
#include "recogniser/program/Engines.h"
#include "recogniser/program/Program.h"
#include "recognition/ModelRequest.h"

#include <sys/prctl.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

namespace {

using namespace dorix;
using namespace dorix::recogniser;

// What the program leaves open for a helper.
constexpr int channelDescriptor = 3;

/// Tells why there is none, and waits to be ended.
std::unique_ptr<Engine> loadEngine(Channel& channel, const ModelRequest& model) {
    try {
        return makeEngine(model);
    } catch (const std::exception&) {
        channel.send({Frame::Kind::refused, localizedDescription(std::current_exception())});
        return nullptr;
    }
}

}  // namespace

int main(int argc, char**) {
    if (argc > 1) {
        std::fputs("dorix-recogniser is started by dorix, and takes no arguments\n", stderr);
        return 2;
    }
    // Also while an engine is at work, which does not listen.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    setLogName("dorix-recogniser");
    Channel channel(channelDescriptor);
    const auto model = modelRequestIn(channel.next().body);
    if (!model) return 1;
    const auto engine = loadEngine(channel, *model);
    if (!engine) return 1;
    channel.send({Frame::Kind::ready, {}});
    try {
        Program(channel, *engine).run();
    } catch (const std::exception& error) {
        logLine(localizedDescription(std::current_exception()));
        return 1;
    }
}
