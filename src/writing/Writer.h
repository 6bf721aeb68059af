#pragma once

#include "base/async/Task.h"
#include "writing/TextPolisher.h"

namespace dorix {

/// Writes dictations with the best engine at hand. Main executor.
class Writer {
 public:
    virtual ~Writer() = default;

    /// Always ends in a text; throws only Cancelled.
    virtual Task<PolishResult> polish(PolishRequest request) = 0;
    /// Tells a text to write from a question, for an utterance that may be either; throws only Cancelled.
    virtual Task<WriteOrAsk> writeOrAsk(PolishRequest request) = 0;
    virtual bool usesCloudEngine() const = 0;
    /// A request like this one will come soon; the transcript is still empty.
    virtual void prewarm(PolishRequest request) = 0;
};

}  // namespace dorix
