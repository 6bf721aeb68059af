#pragma once

#include "base/async/Turns.h"
#include "memory/embedding/Embedder.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

class Executor;
class ModelServer;

/// Has the user's own model server make the vectors, where it runs on this computer and has a model for that.
class ServerEmbedder final : public Embedder {
 public:
    /// Both outlive it.
    ServerEmbedder(Executor& executor, ModelServer& server) : executor_(executor), server_(server) {}

    /// Asks the server for a vector where that has not been done for a minute: its length is part of the
    /// identity.
    Task<bool> prepare() override;
    Task<std::optional<std::vector<float>>> embed(std::string text, Pace pace) override;
    std::string identity() const override { return identity_; }

 private:
    Task<std::optional<std::vector<float>>> ask(std::string text);
    void forget();

    Executor& executor_;
    ModelServer& server_;
    std::string model_;  // with the server's address
    std::size_t dimension_ = 0;
    std::string identity_;
    double askedAt_ = -std::numeric_limits<double>::infinity();
    Turns turns_;
};

}  // namespace dorix
