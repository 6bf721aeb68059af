#include "localdata/HistoryRows.h"
#include "localdata/HistoryStore.h"
#include "sqlite/Sqlite.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

// What the history costs, beside the same statements on plain SQLite. The cost of waiting for the disk is the
// machine's, so files lie in memory where the system has a folder there.
namespace dorix {
namespace {

namespace fs = std::filesystem;
using Persist = HistoryStore::Persist;

class Folder {
 public:
    Folder() {
        const fs::path memory = "/dev/shm";
        std::string name =
            (fs::is_directory(memory) ? memory : fs::temp_directory_path()) / "dorix-bench-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the benchmark");
        path = name;
    }
    ~Folder() { fs::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    fs::path path;
};

HistoryItem numbered(std::int64_t number) {
    return {.id = "7F1C3A52-0B7E-4C11-9D5B-" + std::to_string(100'000'000'000 + number),
            .kind = HistoryKind::dictado,
            .app = "Editor de textos",
            .bundleID = "org.example.editor",
            .title = "Nos vemos mañana a las diez",
            .createdAt = 1.7e9 + static_cast<double>(number),
            .query = "eh nos vemos mañana a las diez en la oficina y llevo yo los papeles",
            .answer = "Nos vemos mañana a las diez en la oficina, y llevo yo los papeles.",
            .meta = {.tone = "Natural",
                     .engine = "nube",
                     .inserted = true,
                     .durationMs = 5200,
                     .source = "voz",
                     .context = std::nullopt,
                     .sources = std::nullopt}};
}

/// A file with that many rows, as years of use would leave it.
fs::path fileOf(const Folder& folder, std::int64_t rows) {
    auto file = folder.path / "dorix.sqlite";
    {
        const HistoryStore schema(file);
    }
    const auto db = sqlite::open(file);
    sqlite::exec(db.get(), "BEGIN");
    const auto statement =
        sqlite::prepare(db.get(), "INSERT INTO history VALUES (?1, 'dictado', ?2, ?3, ?4, ?5, ?6, ?7, ?8)");
    for (std::int64_t i = 0; i < rows; ++i) {
        const auto item = numbered(i);
        sqlite::bindText(statement.get(), 1, item.id);
        sqlite::bindText(statement.get(), 2, item.app);
        sqlite::bindText(statement.get(), 3, item.bundleID);
        sqlite::bindText(statement.get(), 4, item.title);
        sqlite3_bind_double(statement.get(), 5, item.createdAt);
        sqlite::bindText(statement.get(), 6, item.query);
        sqlite::bindText(statement.get(), 7, item.answer);
        sqlite::bindText(statement.get(), 8, encodeMeta(item.meta));
        sqlite3_step(statement.get());
        sqlite3_reset(statement.get());
    }
    sqlite::exec(db.get(), "COMMIT");
    return file;
}

void historyOpen(benchmark::State& state) {
    const Folder folder;
    const auto file = fileOf(folder, state.range(0));
    for (auto _ : state) {
        const HistoryStore store(file);
        if (store.items().empty()) state.SkipWithError("nothing was read");
    }
}
BENCHMARK(historyOpen)->Arg(2'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void plainOpen(benchmark::State& state) {
    const Folder folder;
    const auto file = fileOf(folder, state.range(0));
    for (auto _ : state) {
        const auto db = sqlite::open(file);
        const auto statement =
            sqlite::prepare(db.get(), "SELECT * FROM history ORDER BY created_at DESC LIMIT 2000");
        while (sqlite3_step(statement.get()) == SQLITE_ROW) {
            for (int column = 0; column < 9; ++column) {
                benchmark::DoNotOptimize(sqlite3_column_text(statement.get(), column));
            }
        }
    }
}
BENCHMARK(plainOpen)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

/// A store whose list has that many items; they are not in the file.
void fill(HistoryStore& store, std::int64_t items) {
    for (std::int64_t i = 0; i < items; ++i) store.add(numbered(i), Persist::no);
}

void historyAdd(benchmark::State& state) {
    const Folder folder;
    HistoryStore store(folder.path / "dorix.sqlite");
    fill(store, state.range(0));
    std::int64_t number = state.range(0);
    const auto subscription =
        store.observe([](const HistoryChange& change) { benchmark::DoNotOptimize(change); });
    for (auto _ : state) store.add(numbered(number++), Persist::yes);
}
BENCHMARK(historyAdd)->Arg(0)->Arg(50'000)->Iterations(5'000)->Unit(benchmark::kMicrosecond);

void plainAdd(benchmark::State& state) {
    const Folder folder;
    const auto file = fileOf(folder, 0);
    const auto db = sqlite::open(file);
    std::int64_t number = 0;
    for (auto _ : state) {
        const auto statement = sqlite::prepare(
            db.get(),
            "INSERT INTO history VALUES (?, 'dictado', 'Editor de textos', 'org.example.editor', "
            "'Nos vemos mañana a las diez', 1.7e9, 'eh nos vemos mañana a las diez en la oficina y "
            "llevo yo los papeles', 'Nos vemos mañana a las diez en la oficina, y llevo yo los "
            "papeles.', '{\"durationMs\":5200,\"engine\":\"nube\",\"inserted\":true}')");
        sqlite::bindText(statement.get(), 1, numbered(number++).id);
        sqlite3_step(statement.get());
    }
}
BENCHMARK(plainAdd)->Iterations(5'000)->Unit(benchmark::kMicrosecond);

/// An item older than half of the list, which has to make room in its middle.
void historyAddInTheMiddle(benchmark::State& state) {
    const Folder folder;
    HistoryStore store(folder.path / "dorix.sqlite");
    fill(store, state.range(0));
    std::int64_t number = state.range(0);
    for (auto _ : state) {
        auto item = numbered(number++);
        item.createdAt = 1.7e9 + static_cast<double>(state.range(0) / 2);
        store.add(item, Persist::yes);
    }
}
BENCHMARK(historyAddInTheMiddle)->Arg(50'000)->Iterations(1'000)->Unit(benchmark::kMicrosecond);

/// A growing answer, shown again with each of its words.
void historyUpdate(benchmark::State& state) {
    const Folder folder;
    HistoryStore store(folder.path / "dorix.sqlite");
    fill(store, state.range(0));
    auto item = numbered(state.range(0) - 1);
    for (auto _ : state) {
        item.answer += 'a';
        store.add(item, Persist::no);
    }
}
BENCHMARK(historyUpdate)->Arg(50'000)->Iterations(10'000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace dorix
