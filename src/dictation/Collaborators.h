#pragma once

#include "base/async/Task.h"
#include "dictation/context/AppContext.h"
#include "localdata/HistoryItem.h"
#include "writing/TextPolisher.h"

#include <string>

/// What the dictation flow asks of subsystems that stand beside it. It owns these interfaces, they fill them.
/// Main executor.
namespace dorix {

/// Writes dictations with the best engine at hand.
class DictationWriter {
 public:
    virtual ~DictationWriter() = default;

    /// Always ends in a text; throws only Cancelled.
    virtual Task<PolishResult> polish(PolishRequest request) = 0;
    virtual bool usesCloudEngine() const = 0;
    /// A request like this one will come soon; the transcript is still empty.
    virtual void prewarm(PolishRequest request) = 0;
};

/// Keeps what was written.
class DictationHistory {
 public:
    virtual ~DictationHistory() = default;

    /// Newest first.
    virtual const HistoryItems& items() const = 0;
    virtual void add(HistoryItem item) = 0;
};

/// Answers what is typed into the panel.
class ComposerAssistant {
 public:
    virtual ~ComposerAssistant() = default;

    /// The id of the history item that will hold the answer.
    virtual std::string askFromComposer(std::string text, AppContext target, bool withScreen) = 0;
};

}  // namespace dorix
