// The whole decision on one utterance, all tests of it.

#include "oracles/IntentOracle.h"
#include "oracles/UtteranceGenerator.h"

#include <benchmark/benchmark.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace dorix;

// Of twenty words each: dictation, a late action, a search, a question about the screen.
constexpr auto utterances = std::to_array<std::string_view>({
    "Hola Ana, te confirmo que mañana por la tarde enviaremos la propuesta definitiva con los precios nuevos "
    "y "
    "el calendario.",
    "Oye, cuando termines de hablar con el cliente de Valencia acuérdate y ponlo todo sin falta en mi "
    "calendario "
    "del equipo.",
    "Can you find the contract that we signed with the new supplier last spring, because I need the price of "
    "it?",
    "¿Qué me están pidiendo exactamente en este correo y por qué dicen que el plazo de entrega ya ha "
    "terminado?",
});

std::array<bool, intentTests.size()> judge(std::string_view transcript) {
    const Utterance utterance(transcript);
    std::array<bool, intentTests.size()> holds{};
    for (std::size_t i = 0; i < holds.size(); ++i) holds.at(i) = intentTests.at(i)(utterance);
    return holds;
}

void decision(benchmark::State& state) {
    const auto transcript = utterances[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state) benchmark::DoNotOptimize(judge(transcript));
}
BENCHMARK(decision)->DenseRange(0, utterances.size() - 1)->Unit(benchmark::kMicrosecond);

void normaliser(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(IntentRules::normalise(utterances[0]));
}
BENCHMARK(normaliser)->Unit(benchmark::kMicrosecond);

// Utterances that were never judged before: what has yet to be built is in the figure.
void decisionOnNewUtterances(benchmark::State& state) {
    static UtteranceGenerator generator(1);
    std::vector<std::string> fresh;
    for (int i = 0; i < 2'000; ++i) fresh.push_back(generator.words(20));
    std::size_t at = 0;
    for (auto _ : state) benchmark::DoNotOptimize(judge(fresh[at++ % fresh.size()]));
}
BENCHMARK(decisionOnNewUtterances)->Iterations(2'000)->Unit(benchmark::kMicrosecond);

std::string repeated(std::string_view piece, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += piece;
    return text;
}

// A hundred thousand words: random ones of the rules' own, and what keeps a backtracking search busy.
void longUtterance(benchmark::State& state) {
    constexpr std::size_t words = 100'000;
    const std::array<std::string, 5> texts{UtteranceGenerator(2).words(words),
                                           "add " + repeated("add to my ", words / 3),
                                           "pon " + repeated("que habla slack ", words / 3),
                                           repeated("añádelo ", words), repeated("я 하 ", words)};
    const auto& text = texts[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state) benchmark::DoNotOptimize(judge(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(longUtterance)->DenseRange(0, 4)->Unit(benchmark::kMillisecond);

void secretContent(benchmark::State& state) {
    const std::string text = repeated("Nuestra propuesta para el cliente, con precios. ", 20);
    for (auto _ : state) benchmark::DoNotOptimize(IntentRules::holdsSecret(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(secretContent)->Unit(benchmark::kMicrosecond);

}  // namespace
