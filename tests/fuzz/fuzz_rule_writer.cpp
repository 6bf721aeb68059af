#include "base/text/Text.h"
#include "base/writing/Faithfulness.h"
#include "service/ai/RuleWriter.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <set>
#include <string>
#include <string_view>

using namespace dorix;

namespace {

// A tenth of a second for a hundred kilobytes, times what a build without optimisation, the sanitizers and
// the fuzzer's counting cost.
constexpr double mostSeconds = 0.1 * 60;
constexpr std::size_t longText = 100'000;

std::string written(std::string_view transcript, std::string_view tone) {
    const auto start = std::clock();
    auto answer = service::writeByRules({.transcript = std::string(transcript), .tone = std::string(tone)});
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    if (seconds > mostSeconds) {
        std::fprintf(stderr, "a dictation of %zu bytes took %.3f s\n", transcript.size(), seconds);
        std::abort();
    }
    return answer.texto;
}

void requireSaid(std::string_view text, std::string_view transcript) {
    const auto foldedTranscript = text::fold(transcript);
    const auto runs = text::letterRuns(foldedTranscript);
    const std::set<std::string_view> words(runs.begin(), runs.end());
    const auto folded = text::fold(text);
    for (const auto word : text::letterRuns(folded)) {
        if (words.contains(word)) continue;
        std::fprintf(stderr, "nobody said \"%.*s\"\n", static_cast<int>(word.size()), word.data());
        std::abort();
    }
}

}  // namespace

/// Whatever is dictated becomes a text in time, with no word that was not said.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view transcript(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto text = written(transcript, data[0] % 2 == 0 ? "profesional" : "tecnico");
    if (faithfulnessScore(text, transcript) < 0.3) std::abort();
    if (text.empty() && !text::trim(transcript).empty()) std::abort();
    requireSaid(text, transcript);

    // Rarely, as it takes a hundred times as long as all the rest.
    if (transcript.empty() || data[0] != 7 || size % 16 != 0) return 0;
    std::string repeated;
    while (repeated.size() < longText) repeated += transcript;
    written(repeated, "neutral");
    return 0;
}
