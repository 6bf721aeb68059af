#pragma once

#include "localdata/SettingsStore.h"
#include "settings/HoldKeyLamp.h"
#include "settings/SettingsSection.h"
#include "speech/models/ModelInstalls.h"

#include <functional>
#include <string>

namespace dorix {

/// How one dictates, and the program as a whole.
class GeneralSection final : public SettingsSection {
 public:
    /// All must outlive it. `showModels` opens the page of the models.
    GeneralSection(SettingsStore& settings, KeyEventMonitors& keys, const SpeechModels& models,
                   ModelInstalls& installs, std::function<void()> showModels);

    std::string id() const override { return "general"; }
    std::string title() const override;
    SettingsRows rows() override;
    void shown() override;
    void hidden() override;

 private:
    void addKey(SettingsRows& rows);
    void addLanguage(SettingsRows& rows);
    void addProgram(SettingsRows& rows);
    SettingsRow loginRow();
    void lookForModel();
    void setLaunchAtLogin(bool enabled);

    SettingsStore& settings_;
    KeyEventMonitors& keys_;
    const SpeechModels& models_;
    const std::function<void()> showModels_;
    HoldKeyLamp lamp_;
    bool isShown_ = false;
    bool hasModel_ = true;
    bool launchesAtLogin_ = false;
    std::string loginFailure_;
};

}  // namespace dorix
