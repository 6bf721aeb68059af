#pragma once

#include "base/Error.h"
#include "platform/LanguageModel.h"
#include "writing/TextPolisher.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace dorix {

/// Why the model of this computer wrote nothing that may be typed.
class LocalError final : public Error {
 public:
    static LocalError unfaithful(std::string rejected) { return LocalError(std::move(rejected)); }
    static LocalError late() { return LocalError(std::nullopt); }

    std::string localizedDescription() const override;

 private:
    explicit LocalError(std::optional<std::string> rejected) : rejected_(std::move(rejected)) {}

    std::optional<std::string> rejected_;  // none: there was no text in time
};

/// The engine on this computer's own language model. What one of another computer wrote is under that one's
/// name. Keeps at most one conversation that was made ready ahead of time. Main executor. Throws LocalError
/// and LanguageModelError.
class LocalPolisher final : public TextPolisher {
 public:
    /// The model must outlive it.
    explicit LocalPolisher(SystemLanguageModel& model, std::string name = "Apple Intelligence (en tu Mac)")
        : model_(model), name_(std::move(name)) {}

    std::string name() const override { return name_; }
    Task<PolishResult> polish(PolishRequest request) override;

    /// Makes a conversation ready for requests of that place and tone; the transcript may be empty.
    void prewarm(const PolishRequest& request);

    bool isAvailable() { return model_.availability() == SystemLanguageModel::Availability::available; }

 private:
    std::unique_ptr<LanguageModelSession> takeSession(const std::string& instructions);

    SystemLanguageModel& model_;
    const std::string name_;
    std::unique_ptr<LanguageModelSession> session_;
    std::string sessionInstructions_;
};

/// What to tell the user of a model that cannot run, in the app language; nothing when it can. Any thread.
std::optional<std::string> unavailableReason(SystemLanguageModel::Availability availability);

}  // namespace dorix
