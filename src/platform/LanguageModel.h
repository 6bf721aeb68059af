#pragma once

#include "base/Error.h"
#include "base/async/Task.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A field of a structured answer; all are texts.
struct GenerationField {
    std::string name;
    std::string guide;  // what the model is told of it

    bool operator==(const GenerationField&) const = default;
};

/// What a model is to answer with. It writes the fields in this order.
struct GenerationSchema {
    std::string name;
    std::vector<GenerationField> fields;

    bool operator==(const GenerationSchema&) const = default;
};

/// The texts of the fields, by name.
using GeneratedContent = std::map<std::string, std::string>;

struct GenerationOptions {
    double temperature = 0;

    bool operator==(const GenerationOptions&) const = default;
};

/// What becomes of a text that the model had to break off, at the limit of what it may write.
enum class CutText : std::uint8_t {
    isTaken,
    fails,  // the answer is none
};

/// A model that did not answer, or not with what it was asked for.
class LanguageModelError : public MessageError {
 public:
    using MessageError::MessageError;
};

/// A conversation with the model under fixed instructions. Main executor; the work is done elsewhere.
class LanguageModelSession {
 public:
    virtual ~LanguageModelSession() = default;

    /// Has the model ready soon; returns at once. Failures are silent: asking will tell.
    virtual void prewarm() = 0;

    /// Whether an answer is under way.
    virtual bool isResponding() const = 0;

    /// The answer, with every field of the schema, which goes into the prompt as well. One at a time; ended
    /// when the task is, or the session is destroyed. Throws LanguageModelError.
    virtual Task<GeneratedContent> respond(std::string prompt, GenerationSchema schema,
                                           GenerationOptions options) = 0;
    /// The same in plain text, with the model's own options.
    virtual Task<std::string> respond(std::string prompt, CutText cut) = 0;
};

/// The language model of this computer. Main executor, which nothing here blocks.
class SystemLanguageModel {
 public:
    /// Whether it can run, and if not, why.
    enum class Availability : std::uint8_t {
        available,
        deviceNotEligible,            // nothing here runs one
        appleIntelligenceNotEnabled,  // what would run one has not been given one
        modelNotReady,                // it is on its way
        otherwise,
    };

    virtual ~SystemLanguageModel() = default;

    /// As it is known now; never asks anybody.
    virtual Availability availability() = 0;

    /// The name of the computer that runs it, where that is not this one.
    virtual std::optional<std::string> farHost() const { return std::nullopt; }

    /// A new conversation, which the model must outlive.
    virtual std::unique_ptr<LanguageModelSession> makeSession(std::string instructions) = 0;
};

/// Where there is none.
class UnavailableLanguageModel final : public SystemLanguageModel {
 public:
    Availability availability() override { return Availability::deviceNotEligible; }
    std::unique_ptr<LanguageModelSession> makeSession(std::string) override {
        return std::make_unique<Session>();
    }

 private:
    struct Session final : LanguageModelSession {
        void prewarm() override {}
        bool isResponding() const override { return false; }
        Task<GeneratedContent> respond(std::string, GenerationSchema, GenerationOptions) override {
            throw LanguageModelError("no language model");
            co_return GeneratedContent();
        }
        Task<std::string> respond(std::string, CutText) override {
            throw LanguageModelError("no language model");
            co_return "";
        }
    };
};

}  // namespace dorix
