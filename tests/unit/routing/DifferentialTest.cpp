#include "base/text/Text.h"
#include "oracles/NaiveIntentRules.h"
#include "oracles/UtteranceGenerator.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace dorix {
namespace {

/// What the rules say, which has to be what the naive evaluation says.
std::string agreed(std::string_view transcript) {
    static const NaiveIntentRules naive;
    const auto intents = describe(judge(transcript));
    EXPECT_EQ(intents, describe(naive.judge(transcript))) << "of \"" << transcript << '"';
    return intents;
}

TEST(IntentRulesDifferentialTest, AgreesWithTheNaiveEvaluationOnGeneratedUtterances) {
    UtteranceGenerator generator(20240501);
    int searches = 0;
    int actions = 0;
    for (int i = 0; i < 5'000 && !HasFailure(); ++i) {
        const auto intents = agreed(generator.next());
        searches += intents.contains(", search") ? 1 : 0;
        actions += intents.contains(", action") ? 1 : 0;
    }
    // A generator that only ever hits or misses would show nothing.
    for (const int count : {searches, actions}) EXPECT_TRUE(count > 500 && count < 4'500) << count;
}

TEST(IntentRulesDifferentialTest, AgreesOnEveryCharacterAroundWords) {
    for (char32_t c = 1; c < 0x3000 && !HasFailure(); ++c) {
        if (c >= 0x250 && c < 0x2000 && c % 7 != 0) continue;  // the scripts between are much alike
        const std::string character = std::filesystem::path(std::u32string(1, c)).string();
        agreed(text::replaceAll("_add_it to_ my calendar_", "_", character));
    }
}

}  // namespace
}  // namespace dorix
