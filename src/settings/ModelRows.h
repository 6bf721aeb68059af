#pragma once

#include "localdata/SettingsStore.h"
#include "settings/SettingsRow.h"
#include "speech/models/ModelInstalls.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// The models that recognise a language: which one serves, and those that are here or can be had. Main
/// executor.
class ModelRows {
 public:
    /// All must outlive it. `changed` is called when the rows are others than they were.
    ModelRows(SettingsStore& settings, const SpeechModels& models, const ModelInstaller& installer,
              ModelInstalls& installs, std::function<void()> changed);

    /// Looks at the disk, some milliseconds.
    void lookAnew();
    void addTo(SettingsRows& rows);
    /// Gives up what waits for the user's second word; whether there was any.
    bool stepBack();

 private:
    struct Entry {
        std::string id;
        bool isInstalled = false;
        bool isPackaged = false;          // comes with the system
        bool isUsable = true;             // its engine is there, and nothing has turned out wrong with it
        std::optional<ModelOffer> offer;  // where it is in the catalogue
        std::string engine;
    };

    void choose(const std::string& id);
    void press(const std::string& model, const std::string& button);
    void showLanguage(const std::string& id);
    SettingsRow language();
    SettingsRow serving() const;
    SettingsRow choiceOfModel();
    SettingsRow model(const Entry& entry);
    void describe(const Entry& entry, SettingsRow& row) const;
    static std::string question(const ModelOffer& offer);

    SettingsStore& settings_;
    const SpeechModels& models_;
    const ModelInstaller& installer_;
    ModelInstalls& installs_;
    const std::function<void()> changed_;
    std::string language_;
    std::vector<Entry> entries_;
    std::string serving_;  // the model that recognises the language; "" when none does
    struct Pending {
        std::string model;
        bool isRemoval = false;
    };
    std::optional<Pending> pending_;  // waits for the user's second word
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
