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
        std::optional<CutText> cut;  // of the last plain text
    };

    Availability state = Availability::available;
    std::optional<std::string> host;         // where it is another computer
    std::optional<GeneratedContent> answer;  // none: it fails
    std::optional<std::string> text;         // the same of plain text
    double duration = 0;                     // seconds that an answer takes
    std::deque<Conversation> conversations;

    Availability availability() override { return state; }
    std::optional<std::string> farHost() const override { return host; }
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
        Task<std::string> respond(std::string prompt, CutText cut) override {
            told.prompts.push_back(std::move(prompt));
            told.cut = cut;
            if (of.duration > 0) co_await sleep(of.duration);
            if (!of.text) throw LanguageModelError("told by the test");
            co_return *of.text;
        }

        FakeLanguageModel& of;
        Conversation& told;
    };
};

}  // namespace dorix
