// The whole decision on one utterance, all tests of it, by the rules and by the naive evaluation with ICU.

#include "base/text/Text.h"
#include "oracles/NaiveIntentRules.h"
#include "oracles/UtteranceGenerator.h"
#include "routing/IntentRules.h"

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

const NaiveIntentRules& naive() {
    static const NaiveIntentRules instance;
    return instance;
}

void decision(benchmark::State& state) {
    const auto transcript = utterances[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state) benchmark::DoNotOptimize(judge(transcript));
}
BENCHMARK(decision)->DenseRange(0, utterances.size() - 1)->Unit(benchmark::kMicrosecond);

void naiveDecision(benchmark::State& state) {
    const auto transcript = utterances[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state) benchmark::DoNotOptimize(naive().judge(transcript));
}
BENCHMARK(naiveDecision)->DenseRange(0, utterances.size() - 1)->Unit(benchmark::kMicrosecond);

// The naive tests where the text is normalised once for all of them, by the rules' own normaliser.
void naiveTestsAlone(benchmark::State& state) {
    const auto transcript = utterances[static_cast<std::size_t>(state.range(0))];
    const auto normalised = IntentRules::normalise(transcript);
    for (auto _ : state) benchmark::DoNotOptimize(naive().judgeNormalised(normalised, transcript));
}
BENCHMARK(naiveTestsAlone)->DenseRange(0, utterances.size() - 1)->Unit(benchmark::kMicrosecond);

void normaliser(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(IntentRules::normalise(utterances[0]));
}
BENCHMARK(normaliser)->Unit(benchmark::kMicrosecond);

void naiveNormaliser(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(naive().normalise(utterances[0]));
}
BENCHMARK(naiveNormaliser)->Unit(benchmark::kMicrosecond);

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

// The time of the naive tests grows with the square of the words here, so there are few.
void naiveLongUtterance(benchmark::State& state) {
    const auto text = "please add " + repeated("add to my ", static_cast<std::size_t>(state.range(0)) / 3);
    for (auto _ : state) benchmark::DoNotOptimize(naive().judge(text));
}
BENCHMARK(naiveLongUtterance)->Arg(1'000)->Arg(2'000)->Arg(4'000)->Unit(benchmark::kMillisecond);

void secretContent(benchmark::State& state) {
    const std::string text = repeated("Nuestra propuesta para el cliente, con precios. ", 20);
    for (auto _ : state) benchmark::DoNotOptimize(IntentRules::holdsSecret(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(secretContent)->Unit(benchmark::kMicrosecond);

}  // namespace
