#pragma once

#include "service/net/Awaitable.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorix::service {

class Metrics;
struct Settings;

/// The language model did not do its part.
class ModelError : public std::exception {
 public:
    enum class Kind : std::uint8_t {
        down,    // not reached, or it refused
        cutOff,  // it began to answer
    };
    /// `detail` is for the log, and holds nothing that the model or a user said.
    ModelError(Kind kind, std::string detail) : kind_(kind), detail_(std::move(detail)) {}
    Kind kind() const { return kind_; }
    const char* what() const noexcept override { return detail_.c_str(); }

 private:
    Kind kind_;
    std::string detail_;
};

/// Asks a language model over an OpenAI-compatible interface ("chat/completions"). What fails before its
/// answer begins is tried again, a few times. A call that is cancelled ends its connection, by which the
/// model knows. All calls on the network thread; they throw ModelError.
class ModelClient {
 public:
    /// The settings have a model. Throws std::runtime_error when the address is none.
    ModelClient(const Settings& settings, Metrics& metrics);
    ~ModelClient();

    /// What a call sends, of the messages in JSON. Pure; any thread.
    enum class Answer : std::uint8_t { whole, streamed };
    std::string requestBody(const std::string& messages, Answer answer) const;

    /// The whole answer at once, within `seconds`, in which all attempts and the pauses between them count.
    Awaitable<std::string> complete(std::string body, int seconds);

    /// Tells the pieces of the answer as they arrive, those that came together at once.
    using OnTexts = std::function<Awaitable<void>(std::vector<std::string> texts)>;
    Awaitable<void> stream(std::string body, OnTexts onTexts);

 private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace dorix::service
