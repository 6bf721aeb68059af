// Files found by their names in a large home: the first question, the next, and one that waits for the names
// to be read anew. Beside it in the same run: find, and plocate with a database of its own where it is
// installed.
//
//     home_names_bench [FILES]
//
// Sixteen files a folder, in folders of folders, with names of two or three words.

#include "base/async/SerialExecutor.h"
#include "base/async/Sleep.h"
#include "base/async/TaskScope.h"
#include "fakes/TemporaryFolder.h"
#include "linux/files/LinuxFileTree.h"
#include "memory/recall/HomeNames.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace dorix;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::array words{"informe", "factura", "acta",     "reunión",     "proyecto", "cliente",
                           "enero",   "notas",   "contrato", "presupuesto", "IMG",      "Captura",
                           "report",  "invoice", "draft",    "final",       "copia",    "señal",
                           "2023",    "v2",      "casa",     "médico",      "viaje",    "receta"};
constexpr int filesOfFolder = 16;
constexpr int foldersOfFolder = 16;

double milliseconds(Clock::time_point since) {
    return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}

void makeHome(const fs::path& home, int files) {
    std::mt19937 bits(1);
    const auto word = [&] { return std::string(words.at(bits() % words.size())); };
    std::vector<fs::path> folders{home};
    for (std::size_t next = 0; files > 0; ++next) {
        for (int i = 0; i < filesOfFolder && files > 0; ++i, --files)
            std::ofstream(folders[next] /
                          (word() + " " + word() + " " + std::to_string(bits() % 10'000) + ".pdf"));
        for (int i = 0; i < foldersOfFolder && folders.size() * filesOfFolder < 10'000'000; ++i) {
            if (folders.size() - next > static_cast<std::size_t>(files) / filesOfFolder + 1) break;
            folders.push_back(folders[next] / (word() + " " + std::to_string(i)));
            fs::create_directory(folders.back());
        }
    }
    std::printf("%zu folders\n", folders.size());
}

double command(const std::string& line) {
    const auto start = Clock::now();
    const int status = std::system(line.c_str());  // NOLINT(cert-env33-c,concurrency-mt-unsafe)
    return status == 0 ? milliseconds(start) : -1;
}

Task<void> ask(HomeNames& names, const char* what, std::vector<std::string> tokens) {
    const auto start = Clock::now();
    const auto found = co_await names.find(std::move(tokens), NameIndex::Match::all);
    std::printf("%-44s %8.1f ms, %zu found\n", what, milliseconds(start), found.size());
    std::fflush(stdout);
}

/// What this process has in memory, in bytes.
double resident() {
    std::ifstream file("/proc/self/statm");
    double all = 0;
    double pages = 0;
    file >> all >> pages;
    return pages * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

Task<void> measure(HomeNames& names) {
    const auto before = resident();
    co_await ask(names, "first question", {"presupuesto", "senal"});
    co_await dorix::sleep(10);  // what is still being read comes to its end
    std::printf("names in memory: %.1f MB\n", (resident() - before) / 1e6);
    for (int i = 0; i < 3; ++i) co_await ask(names, "next question", {"senal", "medico"});
    co_await ask(names, "a word that is nowhere", {"inexistente"});
    co_await dorix::sleep(15);
    co_await ask(names, "a question after a while", {"presupuesto", "senal"});
}

}  // namespace

int main(int count, char** arguments) {
    const int files = count > 1 ? std::atoi(arguments[1]) : 500'000;
    const TemporaryFolder home;
    makeHome(home.path(), files);
    const auto path = home.path().string();
    for (int i = 0; i < 2; ++i)
        std::printf("%-44s %8.1f ms\n", "find -iname",
                    command("find " + path + " -iname '*presupuesto*' | wc -l > /dev/null"));
    const auto database = path + ".plocate";
    const auto built =
        command("updatedb -l no -U " + path + " --prunepaths '' -o " + database + " 2> /dev/null");
    if (built >= 0) {
        std::printf("%-44s %8.1f ms\n", "updatedb of plocate", built);
        std::printf("%-44s %8.1f ms\n", "plocate -i",
                    command("plocate -i -d " + database + " presupuesto | wc -l > /dev/null"));
        fs::remove(database);
    }
    SerialExecutor main;
    LinuxFileTree tree;
    std::promise<void> ended;
    struct Run {
        Run(Executor& main, FileTree& tree, const fs::path& home)
            : names(main, tree, threads, home), tasks(main) {}
        LooseThreads threads;
        HomeNames names;
        TaskScope tasks;
    };
    std::optional<Run> run;
    const auto all = [&ended](HomeNames& names) -> Task<void> {
        co_await measure(names);
        ended.set_value();
    };
    main.post([&] {
        run.emplace(main, tree, home.path());
        run->tasks.spawn(all(run->names));
    });
    ended.get_future().wait();
    main.post([&run] { run.reset(); });
    main.stop();
}
