#pragma once

#include "routing/IntentRules.h"
#include "writing/BasicPolisher.h"
#include "writing/Writer.h"

#include <utility>

namespace dorix {

/// Writes every dictation by rule, on this computer.
class BasicWriter final : public Writer {
 public:
    Task<PolishResult> polish(PolishRequest request) override { return polisher_.polish(std::move(request)); }
    /// With no field to type in, or a word that points at the screen, it is a question.
    Task<WriteOrAsk> writeOrAsk(PolishRequest request) override {
        if (request.editableFocus == false || IntentRules::refersToScreen(request.transcript))
            co_return Ask{};
        co_return co_await polisher_.polish(std::move(request));
    }
    bool usesCloudEngine() const override { return false; }
    void prewarm(PolishRequest) override {}

 private:
    BasicPolisher polisher_;
};

}  // namespace dorix
