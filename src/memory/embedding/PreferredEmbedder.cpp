#include "memory/embedding/PreferredEmbedder.h"

#include <utility>

namespace dorix {

Task<bool> PreferredEmbedder::prepare() {
    for (auto* embedder : {&first_, &second_}) {
        if (!co_await embedder->prepare()) continue;
        chosen_ = embedder;
        co_return true;
    }
    chosen_ = nullptr;
    co_return false;
}

Task<std::optional<std::vector<float>>> PreferredEmbedder::embed(std::string text, Pace pace) {
    if (chosen_ == nullptr) co_return std::nullopt;
    co_return co_await chosen_->embed(std::move(text), pace);
}

}  // namespace dorix
