#pragma once

#include "dictation/Collaborators.h"
#include "writing/BasicPolisher.h"

namespace dorix {

/// Writes every dictation by rule, on this computer.
class BasicWriter final : public DictationWriter {
 public:
    Task<PolishResult> polish(PolishRequest request) override { return polisher_.polish(std::move(request)); }
    bool usesCloudEngine() const override { return false; }
    void prewarm(PolishRequest) override {}

 private:
    BasicPolisher polisher_;
};

}  // namespace dorix
