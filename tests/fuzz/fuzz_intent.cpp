#include "oracles/IntentOracle.h"
#include "oracles/UtteranceGenerator.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>

using namespace dorix;

namespace {

// Fifty milliseconds of the processor for any utterance, times what a build without optimisation, the
// sanitizers and the fuzzer's counting cost.
constexpr double mostSeconds = 0.050 * 20;
// By ICU it takes time that grows with the square of the text.
constexpr std::size_t longestForIcu = 2'000;
// What a small input is blown up to, to be an utterance of twenty thousand words: enough that quadratic time
// shows.
constexpr std::size_t longText = 120'000;

/// An input whose first byte is odd is told in words of the rules, one a byte or two.
std::string transcriptFrom(std::string_view input) {
    if (input.empty() || input.front() % 2 == 0) return std::string(input.substr(input.empty() ? 0 : 1));
    const auto& words = intentVocabulary();
    std::string text;
    for (std::size_t i = 1; i + 1 < input.size(); i += 2) {
        const auto high = static_cast<unsigned char>(input[i]);
        const auto low = static_cast<unsigned char>(input[i + 1]);
        if (high >= 0xE0) {
            text += static_cast<char>(low);
        } else {
            text += (text.empty() ? "" : " ") + words[(high * 256U + low) % words.size()];
        }
    }
    return text;
}

std::string repeated(std::string_view text) {
    std::string out;
    while (!text.empty() && out.size() < longText) out += text;
    return out;
}

void judgeInTime(std::string_view transcript) {
    const auto start = std::clock();
    const Utterance utterance(transcript);
    for (const auto test : intentTests) test(utterance);
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    if (seconds <= mostSeconds) return;
    std::fprintf(stderr, "an utterance of %zu bytes took %.3f s\n", transcript.size(), seconds);
    std::abort();
}

void compare(std::string_view transcript) {
    const auto said = judged(transcript);
    const auto expected = judgedByIcu(transcript);
    if (said == expected) return;
    std::fprintf(stderr, "the rules: %s\nICU:       %s\n", said.c_str(), expected.c_str());
    std::abort();
}

}  // namespace

/// Whatever is said is judged in time, and as ICU judges it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto transcript = transcriptFrom({reinterpret_cast<const char*>(data), size});
    judgeInTime(transcript);
    if (transcript.size() <= longestForIcu) compare(transcript);

    IntentRules::isSecretName(transcript);
    IntentRules::holdsSecret(transcript);

    // Rarely, as it takes a hundred times as long as all the rest.
    if (size > 1 && data[0] % 32 == 7) judgeInTime(repeated(transcript));
    return 0;
}
