#include "memory/embedding/ServerEmbedder.h"

#include "base/async/Executor.h"
#include "memory/embedding/UnitLength.h"
#include "modelserver/ModelServer.h"

#include <utility>

namespace dorix {

namespace {
constexpr double trueFor = 60;  // seconds
constexpr auto sample = "DORIX";
}  // namespace

Task<bool> ServerEmbedder::prepare() {
    server_.availability();  // has it looked for anew when that is due
    const auto model = server_.embedder();
    if (model.empty()) {
        forget();
        co_return false;
    }
    const auto named = server_.state().get().server + " " + model;
    if (!identity_.empty() && named == model_ && executor_.now() - askedAt_ < trueFor) co_return true;
    const auto vector = co_await ask(sample);
    if (!vector) {
        forget();
        co_return false;
    }
    model_ = named;
    dimension_ = vector->size();
    identity_ = "server " + named + " " + std::to_string(dimension_);
    askedAt_ = executor_.now();
    co_return true;
}

Task<std::optional<std::vector<float>>> ServerEmbedder::embed(std::string text, Pace) {
    if (identity_.empty() || text.empty()) co_return std::nullopt;
    const auto before = identity_;
    auto vector = co_await ask(std::move(text));
    if (!vector || identity_ != before) co_return std::nullopt;
    // It is another model by now.
    if (vector->size() != dimension_) {
        forget();
        co_return std::nullopt;
    }
    if (!makeUnitLength(*vector)) co_return std::nullopt;
    co_return vector;
}

Task<std::optional<std::vector<float>>> ServerEmbedder::ask(std::string text) {
    const auto turn = co_await turns_.next();
    try {
        co_return co_await server_.embed(std::move(text));
    } catch (const ModelServerError& error) {
        // A text that it does not take says nothing about the next one; a server that is gone, or takes its
        // time, is not waited for a thousand times.
        if (error.kind() != ModelServerError::Kind::badRequest) forget();
        co_return std::nullopt;
    }
}

void ServerEmbedder::forget() { identity_.clear(); }

}  // namespace dorix
