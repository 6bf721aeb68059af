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

}  // namespace dorix
