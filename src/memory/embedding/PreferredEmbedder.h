#pragma once

#include "memory/embedding/Embedder.h"

#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// The first of two that is ready.
class PreferredEmbedder final : public Embedder {
 public:
    /// Both outlive it.
    PreferredEmbedder(Embedder& first, Embedder& second) : first_(first), second_(second) {}

    Task<bool> prepare() override;
    Task<std::optional<std::vector<float>>> embed(std::string text, Pace pace) override;
    std::string identity() const override { return chosen_ == nullptr ? "" : chosen_->identity(); }

 private:
    Embedder& first_;
    Embedder& second_;
    Embedder* chosen_ = nullptr;
};

}  // namespace dorix
