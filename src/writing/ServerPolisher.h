#pragma once

#include "writing/TextPolisher.h"

#include <optional>
#include <string>
#include <utility>

namespace dorix {

class DorixAPI;

/// The cloud engine: the service writes the text, or finds that the words are a question. Main executor. What
/// fails is thrown as DorixAPI throws it, as is a text that has strayed too far from what was dictated.
class ServerPolisher final : public TextPolisher {
 public:
    /// The API must outlive it.
    explicit ServerPolisher(DorixAPI& api, std::string name = "Nube de DORIX")
        : api_(api), name_(std::move(name)) {}

    std::string name() const override { return name_; }
    Task<PolishResult> polish(PolishRequest request) override;

    /// Nothing when the utterance is to be answered instead, which the service may say only if it is allowed
    /// to.
    enum class AllowAsk { no, yes };
    Task<std::optional<PolishResult>> write(PolishRequest request, AllowAsk allowAsk);

 private:
    DorixAPI& api_;
    const std::string name_;
};

}  // namespace dorix
