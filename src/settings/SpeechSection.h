#pragma once

#include "settings/MicrophoneRows.h"
#include "settings/ModelRows.h"
#include "settings/ServerRows.h"
#include "settings/SettingsSection.h"

#include <string>

namespace dorix {

/// What is listened to, and what understands it.
class SpeechSection final : public SettingsSection {
 public:
    struct Parts {
        Executor& executor;
        SettingsStore& settings;
        AudioEngineFactory& audio;
        const SpeechModels& models;
        const ModelInstaller& installer;
        ModelInstalls& installs;
        SpeechServer& server;
        /// Whether this system's own recogniser serves, which has its models from the system.
        bool hasSystemRecogniser;
    };

    /// All must outlive it.
    SpeechSection(const Parts& parts, MicrophoneTest& test);

    std::string id() const override { return "speech"; }
    std::string title() const override;
    SettingsRows rows() override;
    void shown() override;
    void hidden() override;
    bool stepBack() override;

 private:
    const bool hasSystemRecogniser_;
    MicrophoneTest& test_;
    MicrophoneRows microphone_;
    ModelRows models_;
    ServerRows server_;
};

}  // namespace dorix
