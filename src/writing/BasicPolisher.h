#pragma once

#include "writing/TextPolisher.h"

#include <string>
#include <utility>

namespace dorix {

/// The engine of last resort: cleans a transcript by rule, with no model and no network. It never fails.
class BasicPolisher final : public TextPolisher {
 public:
    explicit BasicPolisher(std::string name = "Básico") : name_(std::move(name)) {}

    std::string name() const override { return name_; }
    Task<PolishResult> polish(PolishRequest request) override;

    /// The same without waiting; any thread.
    PolishResult polished(std::string_view transcript) const;

 private:
    std::string name_;
};

/// Writes every dictation by rule, on this computer.
class BasicWriter final : public Writer {
 public:
    Task<PolishResult> polish(PolishRequest request) override { return polisher_.polish(std::move(request)); }
    /// With no field to type in, or a word that points at the screen, it is a question.
    Task<WriteOrAsk> writeOrAsk(PolishRequest request) override;
    bool usesCloudEngine() const override { return false; }
    void prewarm(PolishRequest) override {}

 private:
    BasicPolisher polisher_;
};

}  // namespace dorix
