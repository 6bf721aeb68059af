#include "oracles/NaiveIntentRules.h"
#include "oracles/UtteranceGenerator.h"
#include "routing/IntentRules.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace dorix;

namespace {

using Clock = std::chrono::steady_clock;

// Fifty milliseconds for any utterance; the sanitizers and the fuzzer's own counting slow all down.
constexpr auto mostTime = std::chrono::milliseconds(50) * 20;
// The naive evaluation takes time that grows with the square of the text.
constexpr std::size_t longestForNaive = 2'000;
// What a small input is blown up to, to be an utterance of a hundred thousand words.
constexpr std::size_t longText = 600'000;

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

Intents judgeInTime(std::string_view transcript) {
    const auto start = Clock::now();
    auto intents = judge(transcript);
    const auto time = Clock::now() - start;
    if (time > mostTime) {
        std::fprintf(
            stderr, "an utterance of %zu bytes took %lld ms\n", transcript.size(),
            static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(time).count()));
        std::abort();
    }
    return intents;
}

void compare(const Intents& intents, std::string_view transcript) {
    static const NaiveIntentRules naive;
    const auto expected = naive.judge(transcript);
    if (intents == expected) return;
    std::fprintf(stderr, "the rules: %s\nnaive:     %s\n", describe(intents).c_str(),
                 describe(expected).c_str());
    std::abort();
}

}  // namespace

/// Whatever is said is judged in time, and as the naive evaluation judges it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto transcript = transcriptFrom({reinterpret_cast<const char*>(data), size});
    const auto intents = judgeInTime(transcript);
    if (transcript.size() <= longestForNaive) compare(intents, transcript);

    IntentRules::isSecretName(transcript);
    IntentRules::holdsSecret(transcript);

    // Rarely, as it takes a hundred times as long as all the rest.
    if (size > 1 && data[0] % 32 == 7) judgeInTime(repeated(transcript));
    return 0;
}
