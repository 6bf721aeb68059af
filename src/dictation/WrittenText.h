#pragma once

#include "base/async/Task.h"
#include "dictation/HUDFlash.h"
#include "dictation/Recording.h"
#include "localdata/HistoryItem.h"
#include "writing/TextPolisher.h"

#include <string>

namespace dorix {

struct DictationEnvironment;

/// What the writing engine is to know of a dictation: where the text goes, and the user's settings and style.
/// An empty transcript announces a request. Main executor.
PolishRequest makePolishRequest(const DictationEnvironment& env, const AppContext& context,
                                std::string transcript);

/// A text that is ready goes to the cursor, to the HUD as a message, and into the history. Main executor;
/// both references outlive it and its tasks.
class WrittenText {
 public:
    WrittenText(const DictationEnvironment& env, HUDFlash& hud) : env_(env), hud_(hud) {}

    /// What the writer made of `transcript`; `seen`: a picture of the window went with it.
    enum class Seen { no, yes };
    Task<void> commit(PolishResult result, std::string transcript, Recording recording, Seen seen);

    /// What `instruction` made of the text that was selected.
    Task<void> replaceSelection(PolishResult result, std::string instruction, std::string selected,
                                Recording recording);

    /// What was said but could not be carried to its end stays in the history.
    void keep(const std::string& transcript, const Recording& recording) const;

    /// The answer of a history item, once more, into `target`.
    Task<void> typeAgain(AppContext target, std::string answer);

 private:
    void remember(HistoryItem item, const Recording& recording) const;

    const DictationEnvironment& env_;
    HUDFlash& hud_;
};

}  // namespace dorix
