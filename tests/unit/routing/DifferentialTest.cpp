#include "base/text/Text.h"
#include "oracles/NaiveIntentRules.h"
#include "oracles/UtteranceGenerator.h"

#include <gtest/gtest.h>

#include <array>

namespace dorix {
namespace {

TEST(IntentRulesDifferentialTest, AgreesWithTheNaiveEvaluationOnGeneratedUtterances) {
    const NaiveIntentRules naive;
    UtteranceGenerator generator(20240501);
    std::array<int, 2> searches{};
    std::array<int, 2> actions{};
    for (int i = 0; i < 10'000; ++i) {
        const auto transcript = generator.next();
        const auto intents = judge(transcript);
        ASSERT_EQ(intents, naive.judge(transcript))
            << "of \"" << transcript << "\" (" << i << ")\n  the rules: " << describe(intents)
            << "\n  naive:     " << describe(naive.judge(transcript));
        ++searches[intents.isSearch ? 1 : 0];
        ++actions[intents.isAction ? 1 : 0];
    }
    // A generator that only ever hits or misses would show nothing.
    for (const auto& counts : {searches, actions}) {
        EXPECT_GT(counts[0], 1'000);
        EXPECT_GT(counts[1], 1'000);
    }
}

TEST(IntentRulesDifferentialTest, AgreesOnEveryCharacterAroundWords) {
    const NaiveIntentRules naive;
    for (char32_t c = 1; c < 0x3000; ++c) {
        if (c >= 0x250 && c < 0x2000 && c % 7 != 0) continue;  // the scripts between are much alike
        std::string character;
        if (c < 0x80) {
            character = {static_cast<char>(c)};
        } else if (c < 0x800) {
            character = {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
        } else {
            character = {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
                         static_cast<char>(0x80 | (c & 0x3F))};
        }
        const auto transcript = text::replaceAll("_add_it to_ my calendar_", "_", character);
        const auto intents = judge(transcript);
        ASSERT_EQ(intents, naive.judge(transcript))
            << "U+" << std::hex << static_cast<unsigned>(c) << "\n  the rules: " << describe(intents)
            << "\n  naive:     " << describe(naive.judge(transcript));
    }
}

}  // namespace
}  // namespace dorix
