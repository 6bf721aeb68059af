#pragma once

#include "dictation/AppState.h"
#include "panel/PanelVerbs.h"
#include "speech/SpeechInput.h"

#include <string>
#include <vector>

namespace dorix {

/// The composer beside its text, which is `AppState.composerText`: what is being heard, and what may be sent.
/// Main executor.
class PanelComposer {
 public:
    /// All must outlive it.
    PanelComposer(AppState& state, SpeechInput& speech, const PanelActions& actions);
    PanelComposer(const PanelComposer&) = delete;
    PanelComposer& operator=(const PanelComposer&) = delete;

    /// What is being understood stands beside the text until it becomes part of it, or nobody wants it any
    /// more.
    Observable<std::string> heard;

    /// The application that a question may be about, by its name; "" where there is none, or nobody to ask.
    std::string windowOwner() const;

    /// There is a text, and somebody to send it to.
    bool maySend() const;
    /// Why nothing can be sent, in the app language; "" where somebody answers.
    std::string refusal() const;
    /// Without anybody to send it to the text stays where it is; false then, for the user to be told why.
    bool send();

 private:
    bool hasText() const;

    AppState& state_;
    const PanelActions& actions_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
