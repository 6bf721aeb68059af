#pragma once

#include "writing/BasicPolisher.h"
#include "writing/LocalPolisher.h"
#include "writing/ServerPolisher.h"
#include "writing/TextPolisher.h"

#include <vector>

namespace dorix {

class AccountStore;
class SettingsStore;

/// Writes with the best engine that can at the moment: the service, the model of this computer, or rules.
/// What fails is told in the log, and the next one writes; the user gets a text in any case. Main executor.
class WritingRouter final : public Writer {
 public:
    /// All must outlive it.
    WritingRouter(SettingsStore& settings, AccountStore& account, DorixAPI& api, LocalPolisher& local);
    WritingRouter(const WritingRouter&) = delete;
    WritingRouter& operator=(const WritingRouter&) = delete;

    /// Throws nothing: whoever is told to stop in the middle has the text by rule at once.
    Task<PolishResult> polish(PolishRequest request) override;
    Task<PolishResult> byRule(PolishRequest request) override;
    Task<WriteOrAsk> writeOrAsk(PolishRequest request) override;
    bool cloudEnabled() const override;
    void prewarm(PolishRequest request) override { local_.prewarm(request); }
    void connect() override;

    /// The engines that can write now, the best one first. Of the router's own.
    std::vector<TextPolisher*> polishers();

 private:
    SettingsStore& settings_;
    AccountStore& account_;
    DorixAPI& api_;
    ServerPolisher cloud_;
    LocalPolisher& local_;
    BasicPolisher basic_;
};

}  // namespace dorix
