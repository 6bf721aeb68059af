#pragma once

#include "base/async/Sleep.h"
#include "platform/LanguageModel.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// A language model that answers what the test tells it to.
class FakeLanguageModel final : public SystemLanguageModel {
 public:
    /// A conversation, and all that was said in it. It is there after its end as well.
    struct Conversation {
        std::string instructions;
        bool isPrewarmed = false;
        bool isResponding = false;
        bool isOver = false;
        std::vector<std::string> prompts;
        GenerationSchema schema;
        GenerationOptions options;
    };

    Availability state = Availability::available;
    std::optional<GeneratedContent> answer;  // none: it fails
    double duration = 0;                     // seconds that an answer takes
    std::deque<Conversation> conversations;

    Availability availability() override { return state; }
    std::unique_ptr<LanguageModelSession> makeSession(std::string instructions) override {
        return std::make_unique<Session>(
            *this, conversations.emplace_back(Conversation{.instructions = std::move(instructions)}));
    }

 private:
    struct Session final : LanguageModelSession {
        Session(FakeLanguageModel& model, Conversation& conversation) : of(model), told(conversation) {}
        ~Session() override { told.isOver = true; }
        Session(const Session&) = delete;
        Session& operator=(const Session&) = delete;

        void prewarm() override { told.isPrewarmed = true; }
        bool isResponding() const override { return told.isResponding; }
        Task<GeneratedContent> respond(std::string prompt, GenerationSchema schema,
                                       GenerationOptions options) override {
            told.prompts.push_back(std::move(prompt));
            told.schema = std::move(schema);
            told.options = options;
            if (of.duration > 0) co_await sleep(of.duration);
            if (!of.answer) throw LanguageModelError("told by the test");
            co_return *of.answer;
        }

        FakeLanguageModel& of;
        Conversation& told;
    };
};

}  // namespace dorix
