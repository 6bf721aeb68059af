#pragma once

#include "assistant/Assistant.h"
#include "base/Error.h"
#include "base/async/Task.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace dorix {

class DorixAPI;
class SystemLanguageModel;
class Writer;

/// Nobody here can answer.
class AssistantError final : public Error {
 public:
    std::string localizedDescription() const override;
};

/// More is selected than whoever rewrites it would be given: the rest would be lost.
class SelectionTooLong final : public Error {
 public:
    std::string localizedDescription() const override;
};

/// Who answers: the service where it is in use, or else the model of this computer. What one of them fails at
/// is not given to the other. Main executor. Throws what DorixAPI and LanguageModelSession throw, and
/// AssistantError where there is neither.
class AnswerEngines {
 public:
    /// All outlive it. `writer` knows whether the service is in use.
    struct Parts {
        const Writer& writer;
        DorixAPI& api;
        SystemLanguageModel& model;
        ScreenCapture* screen = nullptr;  // reads pictures for a model that sees none; may be null
    };

    struct Answer {
        std::string text;
        std::string engine;  // its label in the history
    };

    /// Gets all the text so far, for the length of the call.
    using OnText = std::function<void(std::string_view text)>;

    explicit AnswerEngines(const Parts& parts) : parts_(parts) {}

    Task<Answer> answer(std::shared_ptr<const Assistant::Request> request, OnText onText);

    /// `selected` as `instruction` wants it, ready to be typed: all of it, or SelectionTooLong, before
    /// anybody is asked.
    Task<Assistant::Rewrite> transform(std::string instruction, std::string selected);

 private:
    bool hasModel() const;
    std::string nameOfModel() const;
    Task<std::string> answerHere(std::shared_ptr<const Assistant::Request> request);
    Task<std::string> rewrittenByService(std::string instruction, std::string selected);

    const Parts parts_;
};

}  // namespace dorix
