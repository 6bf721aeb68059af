#pragma once

#include "platform/HttpClient.h"
#include "platform/LanguageModel.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorix {

/// Where a server of language models answers, and the key that it asks for, which may be empty.
struct ModelEndpoint {
    std::string url;  // as the user wrote it: with or without "/v1" at its end
    std::string key;

    bool operator==(const ModelEndpoint&) const = default;
};

/// Why a server gave no answer of use.
class ModelServerError final : public LanguageModelError {
 public:
    enum class Kind : std::uint8_t {
        unreachable,  // nobody there
        late,         // no answer in time
        loading,      // it is not ready yet
        refused,      // it wants another key, or none of us
        badRequest,   // it does not take what it was asked
        invalid,      // whatever answers is no such server, or not at its best
    };

    /// `status` is that of an HTTP answer, where there was one.
    explicit ModelServerError(Kind kind, std::optional<int> status = std::nullopt)
        : LanguageModelError("the model's server gave no answer of use"), kind_(kind), status_(status) {}
    Kind kind() const { return kind_; }
    std::string localizedDescription() const override;

 private:
    Kind kind_;
    std::optional<int> status_;
};

/// Calls of a server with the interface that such servers have in common ("v1/chat/completions"). Main
/// executor, which none of them blocks; each ends when its task does. They throw ModelServerError.
class ModelClient {
 public:
    struct Chat {
        std::string model;
        std::string instructions;
        std::string prompt;
        std::optional<GenerationSchema> schema;  // asked for in the prompt as well
        std::optional<double> temperature;
        std::optional<int> mostTokens;
        CutText cut = CutText::isTaken;
    };

    /// The client must outlive it.
    explicit ModelClient(HttpClient& http) : http_(http) {}

    /// The names of the server's models. `timeout` is in seconds, for all of the exchange.
    Task<std::vector<std::string>> models(ModelEndpoint at, double timeout);

    /// What the model writes. A server that does not take the schema is asked once more without.
    Task<std::string> chat(ModelEndpoint at, Chat chat, double timeout);

    /// The vector of a text ("v1/embeddings"): numbers that are some, of whatever length they together have.
    Task<std::vector<float>> embedding(ModelEndpoint at, std::string model, std::string text, double timeout);

 private:
    Task<std::string> call(HttpRequest request, std::size_t largestAnswer);

    HttpClient& http_;
    std::string takesNoSchema_;  // the last server that said so, by its address
};

}  // namespace dorix
