#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace dorix {

/// The answers of all tests of IntentRules to one transcript.
struct Intents {
    std::string normalised;
    bool isTeach = false;
    bool isSearch = false;
    bool isAction = false;
    bool isRecap = false;
    bool refersToSelection = false;
    bool isTransform = false;
    bool isReply = false;
    bool isSelectionCommand = false;
    bool refersToScreen = false;
    bool isScreenQuestion = false;
    bool meetingStart = false;
    bool meetingStop = false;
    bool teachDone = false;

    bool operator==(const Intents&) const = default;
};

/// For the messages of failing tests.
std::string describe(const Intents& intents);

/// The answers of IntentRules.
Intents judge(std::string_view transcript);

/// The tests in the plainest form: each normalises for itself, each pattern is run by ICU, each list is gone
/// through. What IntentRules must agree with, and be faster than. One thread at a time.
class NaiveIntentRules {
 public:
    NaiveIntentRules();
    ~NaiveIntentRules();

    std::string normalise(std::string_view transcript) const;
    Intents judge(std::string_view transcript) const;

    /// The tests alone, on what `normalise` gave, which the benchmark sets apart.
    Intents judgeNormalised(std::string normalised, std::string_view transcript) const;

 private:
    struct Patterns;
    std::unique_ptr<Patterns> patterns_;
};

}  // namespace dorix
