#include "base/async/ManualExecutor.h"
#include "base/text/Text.h"
#include "panel/PanelList.h"
#include "panel/PanelSections.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

// What a key press in the panel's search costs, beside a plain search that folds every item at every key. The
// history lies in memory only: its file is the matter of another benchmark.
namespace dorix {
namespace {

constexpr double secondsBetween = 4 * 3600;

/// A dictation of five sentences whose words change from one to the next.
std::string dictation(std::int64_t number) {
    constexpr std::array<std::string_view, 6> sentences{
        "Nos vemos mañana a las diez en la oficina, y llevo yo los papeles. ",
        "¿Puedes mandarme el presupuesto de la reforma del baño cuando lo tengas? ",
        "He hablado con Íñigo: la reunión del jueves pasa al viernes por la mañana. ",
        "El paquete llegó ayer, pero faltaba la factura… ¡a ver si la encuentran! ",
        "Revisa por favor la presentación: la página dos tiene un error en el gráfico. ",
        "Gracias por todo 🙂, el equipo está encantado con cómo quedó la propuesta. "};
    std::string text;
    for (std::int64_t i = 0; i < 5; ++i) {
        text += sentences[static_cast<std::size_t>((number * 7 + i * i) % 6)];
    }
    return text + std::to_string(number);
}

HistoryItem numbered(std::int64_t number, double newest) {
    const auto text = dictation(number);
    return {.id = "7F1C3A52-0B7E-4C11-9D5B-" + std::to_string(100'000'000'000 + number),
            .app = "Editor de textos",
            .title = text.substr(0, 40),
            .createdAt = newest - static_cast<double>(number) * secondsBetween,
            .query = "eh " + text,
            .answer = text};
}

/// A history of that many items and one whose answer is a book.
struct Bench {
    explicit Bench(std::int64_t count) {
        for (std::int64_t i = count; i-- > 0;) {
            history.add(numbered(i, executor.date()), HistoryStore::Persist::no);
        }
        auto book = numbered(count, executor.date());
        while (book.answer.size() < 400'000)
            book.answer += dictation(static_cast<std::int64_t>(book.answer.size()));
        history.add(book, HistoryStore::Persist::no);
    }

    ManualExecutor executor;
    AppState state;
    HistoryStore history{"/dev/null/none"};
};

constexpr std::string_view typed = "factura de la reforma";

/// One key after the other, as a person types; the first of them meets items that were folded ahead.
void keyPress(benchmark::State& state) {
    Bench bench(state.range(0));
    PanelList list(bench.executor, bench.state, bench.history);
    bench.state.panelOpen.set(true);
    bench.executor.advanceBy(10);
    std::size_t typedKeys = 0;
    for (auto _ : state) {
        typedKeys = typedKeys % typed.size() + 1;
        bench.state.query.set(std::string(typed.substr(0, typedKeys)));
        benchmark::DoNotOptimize(list.rows().data());
    }
}
BENCHMARK(keyPress)->Arg(2'000)->Unit(benchmark::kMillisecond);

std::size_t plainSearch(const HistoryItems& items, std::string_view sought) {
    const auto query = text::fold(sought);
    return static_cast<std::size_t>(std::ranges::count_if(items, [&](const HistoryItem& item) {
        const auto holds = [&](const std::string& field) { return text::fold(field).contains(query); };
        return holds(item.title) || holds(item.query) || holds(item.answer) || holds(item.app);
    }));
}

void plainKeyPress(benchmark::State& state) {
    const Bench bench(state.range(0));
    std::size_t typedKeys = 0;
    for (auto _ : state) {
        typedKeys = typedKeys % typed.size() + 1;
        benchmark::DoNotOptimize(plainSearch(bench.history.items(), typed.substr(0, typedKeys)));
    }
}
BENCHMARK(plainKeyPress)->Arg(2'000)->Unit(benchmark::kMillisecond);

constexpr std::array<std::string_view, 2> nowhere{"eje que no está", "en ningún lado"};

/// The dearest key: a text that is nowhere and goes on from no earlier one, as when it was pasted.
void unmatchedKey(benchmark::State& state) {
    Bench bench(state.range(0));
    PanelList list(bench.executor, bench.state, bench.history);
    bench.state.panelOpen.set(true);
    bench.executor.advanceBy(10);
    std::size_t which = 0;
    for (auto _ : state) {
        which = 1 - which;
        bench.state.query.set(std::string(nowhere.at(which)));
        benchmark::DoNotOptimize(list.rows().data());
    }
}
BENCHMARK(unmatchedKey)->Arg(2'000)->Unit(benchmark::kMillisecond);

void plainUnmatchedKey(benchmark::State& state) {
    const Bench bench(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(plainSearch(bench.history.items(), nowhere.front()));
}
BENCHMARK(plainUnmatchedKey)->Arg(2'000)->Unit(benchmark::kMillisecond);

/// The first key before anything was folded ahead.
void firstKeyUnprepared(benchmark::State& state) {
    Bench bench(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        PanelList list(bench.executor, bench.state, bench.history);
        state.ResumeTiming();
        bench.state.query.set("f");
        state.PauseTiming();
        bench.state.query.set("");
        state.ResumeTiming();
    }
}
BENCHMARK(firstKeyUnprepared)->Arg(2'000)->Unit(benchmark::kMillisecond);

/// One turn of folding ahead, which must not be felt.
void warmUpTurn(benchmark::State& state) {
    Bench bench(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        SearchIndex index(bench.history.items());
        state.ResumeTiming();
        benchmark::DoNotOptimize(index.warmUp());
    }
}
BENCHMARK(warmUpTurn)->Arg(2'000)->Unit(benchmark::kMillisecond);

/// The list's making, which the panel's opening waits for.
void listMade(benchmark::State& state) {
    Bench bench(state.range(0));
    for (auto _ : state) {
        const PanelList list(bench.executor, bench.state, bench.history);
        benchmark::DoNotOptimize(list.rows().data());
    }
}
BENCHMARK(listMade)->Arg(2'000)->Unit(benchmark::kMillisecond);

/// A word more of an answer that grows while a search is on.
void answerGrows(benchmark::State& state) {
    Bench bench(state.range(0));
    PanelList list(bench.executor, bench.state, bench.history);
    bench.state.query.set("oficina");
    auto item = bench.history.items().front();
    for (auto _ : state) {
        item.answer += "palabra ";
        bench.history.add(item, HistoryStore::Persist::no);
    }
}
BENCHMARK(answerGrows)->Arg(2'000)->Iterations(1'000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace dorix
