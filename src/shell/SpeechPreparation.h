#pragma once

#include "base/async/Task.h"

namespace dorix {

class DictationController;
class SettingsStore;
class SpeechEngine;
class SpeechServer;

/// Gets the recogniser of the language ready before anybody speaks. Main executor; what it is given outlives
/// it.
class SpeechPreparation {
 public:
    SpeechPreparation(SettingsStore& settings, SpeechServer& server, SpeechEngine& engine,
                      DictationController& dictation)
        : settings_(settings), server_(server), engine_(engine), dictation_(dictation) {}

    /// Tells the user what is missing, and where their words will go when they leave this computer.
    Task<void> prepare();
    /// The settings tell what is missing, at its place.
    Task<void> prepareQuietly();

 private:
    SettingsStore& settings_;
    SpeechServer& server_;
    SpeechEngine& engine_;
    DictationController& dictation_;
};

}  // namespace dorix
