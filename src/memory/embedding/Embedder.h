#pragma once

#include "base/async/Task.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// Makes vectors of texts, by which texts of like meaning are near to each other. Main executor, which none
/// of it blocks. Nothing throws but Cancelled.
///
/// Which model makes the vectors may change, but only during `prepare`. The vectors of two models have
/// nothing in common, so whoever keeps or compares some first tells the store of the model, after each
/// `prepare`:
///
///     if (co_await embedder.prepare()) co_await store.useVectorsOf(embedder.identity());
///
/// A document during whose embedding the identity changed is embedded anew.
class Embedder {
 public:
    /// Whether somebody waits for a vector, or it is made with what others leave of the processor.
    enum class Pace : std::uint8_t { awaited, idle };

    virtual ~Embedder() = default;

    /// Makes it ready, loading the model where that has not been done; whether it is. Worth asking each time:
    /// what is ready answers at once, and what is not may have become so.
    virtual Task<bool> prepare() = 0;

    /// The vector of a text: of unit length, or all zeros. Nothing while it is not prepared, for a text
    /// without anything that the model knows, or where the model fails. One text of each pace at a
    /// time, in the order of asking; what was asked is made also when its caller goes meanwhile.
    virtual Task<std::optional<std::vector<float>>> embed(std::string text, Pace pace) = 0;

    /// The model that makes the vectors, in words that no other one has; "" while it is not prepared.
    virtual std::string identity() const = 0;
};

/// Where there is no model: what searches does so by words alone.
class NoEmbedder final : public Embedder {
 public:
    Task<bool> prepare() override { co_return false; }
    Task<std::optional<std::vector<float>>> embed(std::string, Pace) override { co_return std::nullopt; }
    std::string identity() const override { return {}; }
};

}  // namespace dorix
