#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace dorix {

/// The answers of all tests of IntentRules to one transcript, in the order in which `describe` names them.
struct Intents {
    static constexpr std::size_t count = 13;
    std::string normalised;
    std::array<bool, count> holds{};
    bool operator==(const Intents&) const = default;
};

/// The normalised text and the names of the tests that hold.
std::string describe(const Intents& intents);

/// The answers of IntentRules.
Intents judge(std::string_view transcript);

/// The tests in the plainest form, on a text normalised once: each pattern is run by ICU, each list is gone
/// through. What IntentRules must agree with, and be faster than. One thread at a time.
class NaiveIntentRules {
 public:
    NaiveIntentRules();
    ~NaiveIntentRules();

    std::string normalise(std::string_view transcript) const;
    Intents judge(std::string_view transcript) const;

    /// The tests alone, on what `normalise` gave, which the benchmark sets apart.
    Intents judgeNormalised(std::string text, std::string_view transcript) const;

 private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
};

}  // namespace dorix
