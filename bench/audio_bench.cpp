// From the key to sound: opening the microphone as a recording does, to its first buffer. Beside it the sound
// server's own recorder, from its start to its first byte. With the sound server of the session.

#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "linux/pulse/PulseAudioEngine.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <vector>

namespace dorix {
namespace {

constexpr int recordings = 100;

void print(const char* what, std::vector<double> seconds) {
    std::ranges::sort(seconds);
    const auto at = [&](double part) {
        return 1000 * seconds[static_cast<std::size_t>(part * static_cast<double>(seconds.size() - 1))];
    };
    std::printf("%-24s p50 %.1f ms, p95 %.1f ms, p99 %.1f ms\n", what, at(0.5), at(0.95), at(0.99));
}

double record(EventLoop& loop, PulseAudioEngineFactory& factory) {
    std::atomic<double> heardAt = 0;
    const double start = loop.main.now();
    const auto engine = factory.makeEngine();
    engine->installTap(1024, engine->inputFormat(), [&](const AudioBuffer&) {
        if (heardAt == 0) heardAt = loop.main.now();
    });
    engine->start();
    loop.runUntil([&] { return heardAt != 0; }, 5);
    engine->stop();
    loop.runFor(0.05);
    return heardAt - start;
}

double recordByTool(EventLoop& loop) {
    const double start = loop.main.now();
    const OtherProgram tool({"parec", "--latency-msec=20"});
    eventually([&] { return !tool.output().empty(); }, 5);
    return loop.main.now() - start;
}

int run() {
    EventLoop loop;
    PulseAudioEngineFactory factory(loop.main);
    if (!loop.runUntil([&] { return factory.makeEngine()->inputFormat().channelCount > 0; }, 10)) {
        std::puts("there is no microphone");
        return 1;
    }
    std::vector<double> own;
    std::vector<double> tool;
    for (int i = 0; i < recordings; ++i) {
        own.push_back(record(loop, factory));
        tool.push_back(recordByTool(loop));
    }
    print("to the first buffer", own);
    print("parec to its first byte", tool);
    return 0;
}

}  // namespace
}  // namespace dorix

int main() { return dorix::run(); }
