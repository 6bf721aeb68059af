// One run of the index over a folder, as the program does it, with the reader's process and by words alone.
//
//     index_bench FOLDER DATABASE [--as-others]
//
// With the option it does not give way to other programs. indexing.py makes the documents and compares.

#include "base/async/TaskScope.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/memory/TestMemory.h"
#include "linux/files/LinuxBackgroundWork.h"
#include "linux/files/LinuxFileTree.h"
#include "linux/loop/PollLoop.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "localdata/HistoryStore.h"
#include "memory/reading/JailedDocumentReader.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <future>
#include <optional>

namespace {

using namespace dorix;

struct Program {
    using Pace = JailedDocumentReader::Pace;

    Program(PollLoop& loop, const std::filesystem::path& folder, const std::filesystem::path& database,
            bool isIdle)
        : defaults(Json{{"memoryFolders", {folder.string()}}}),
          processes(loop, DORIX_PROGRAM),
          reader(loop, processes, isIdle ? Pace::idle : Pace::awaited),
          history(std::filesystem::path(database) += ".history"),
          made(loop, defaults, history, database,
               {.reader = &reader,
                .files = &files,
                .background = isIdle ? &idle : nullptr,
                .home = folder,
                .documentFolders = {}}) {}

    MemoryUserDefaults defaults;
    LinuxHelperProcesses processes;
    JailedDocumentReader reader;
    LinuxFileTree files;
    LinuxBackgroundWork idle;
    HistoryStore history;
    TestMemory made;
};

}  // namespace

int main(int count, char** arguments) {
    const bool isIdle = count < 4;
    if (count < 3) return 2;
    PollLoop loop;
    std::optional<Program> program;
    std::promise<void> ended;
    Subscription watch;
    const auto start = std::chrono::steady_clock::now();
    loop.post([&] {
        auto& memory = program.emplace(loop, arguments[1], arguments[2], isIdle).made.memory;
        // The counts come last.
        watch = memory.lastIndexed.subscribe([&](const auto&) { loop.post([&] { ended.set_value(); }); });
        memory.indexNow();
    });
    ended.get_future().wait();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    std::promise<void> gone;
    loop.post([&] {
        std::printf("%.2f s: %s\n", taken.count(), program->made.memory.progress.get().c_str());
        watch.reset();
        program.reset();
        gone.set_value();
    });
    gone.get_future().wait();
}
