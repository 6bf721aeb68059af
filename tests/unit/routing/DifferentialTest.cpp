#include "base/text/Text.h"
#include "oracles/IntentOracle.h"
#include "oracles/UtteranceGenerator.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace dorix {
namespace {

/// What the rules say, which has to be what they say by ICU.
std::string agreed(std::string_view transcript) {
    auto intents = judged(transcript);
    EXPECT_EQ(intents, judgedByIcu(transcript)) << "of \"" << transcript << '"';
    return intents;
}

TEST(IntentRulesDifferentialTest, AgreesWithIcuOnGeneratedUtterances) {
    UtteranceGenerator generator(20240501);
    int searches = 0;
    int actions = 0;
    for (int i = 0; i < 5'000 && !HasFailure(); ++i) {
        const auto intents = agreed(generator.next());
        searches += intents.contains(", search") ? 1 : 0;
        actions += intents.contains(", action") ? 1 : 0;
    }
    // A generator that only ever hits or misses would show nothing.
    for (const int count : {searches, actions}) EXPECT_TRUE(count > 250 && count < 4'750) << count;
}

TEST(IntentRulesDifferentialTest, AgreesOnEveryCharacterAroundWords) {
    for (char32_t c = 1; c < 0x3000 && !HasFailure(); ++c) {
        if (c >= 0x250 && c < 0x2000 && c % 17 != 0) continue;  // the scripts between are much alike
        const std::string character = std::filesystem::path(std::u32string(1, c)).string();
        for (const auto* text :
             {"_add it to my calendar", "add_it to my calendar", "add it to my calendar_"}) {
            agreed(text::replaceAll(text, "_", character));
        }
    }
}

}  // namespace
}  // namespace dorix
