#pragma once

#include "writing/BasicPolisher.h"
#include "writing/TextPolisher.h"

#include <stdexcept>
#include <utility>
#include <vector>

namespace dorix {

/// Writes by rule and keeps what it was asked.
class RecordingWriter final : public Writer {
 public:
    Task<PolishResult> polish(PolishRequest request) override {
        requests.push_back(request);
        if (breaks) throw std::runtime_error("the writer broke");
        co_return polisher_.polished(request.transcript);
    }
    Task<WriteOrAsk> writeOrAsk(PolishRequest request) override {
        judged.push_back(request);
        if (judgement == Judgement::ask) co_return Ask{};
        co_return polisher_.polished(request.transcript);
    }
    bool usesCloudEngine() const override { return cloud; }
    void prewarm(PolishRequest request) override { prewarmed.push_back(std::move(request)); }

    enum class Judgement { write, ask };

    bool cloud = false;
    bool breaks = false;  // it fails, which no writer may
    Judgement judgement = Judgement::write;
    std::vector<PolishRequest> judged;
    std::vector<PolishRequest> requests;
    std::vector<PolishRequest> prewarmed;

 private:
    BasicPolisher polisher_;
};

}  // namespace dorix
