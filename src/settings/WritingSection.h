#pragma once

#include "cloud/AccountStore.h"
#include "cloud/OwnService.h"
#include "localdata/SettingsStore.h"
#include "modelserver/ModelServer.h"
#include "settings/SettingsSection.h"

#include <functional>
#include <string>

namespace dorix {

/// Who writes, how they stand, and in which style.
class WritingSection final : public SettingsSection {
 public:
    /// All must outlive it. `models` is null where the system has a language model of its own; `showAccount`
    /// opens the account's window.
    WritingSection(SettingsStore& settings, const AccountStore& account, const OwnService& own,
                   ModelServer* models, std::function<void()> showAccount);

    std::string id() const override { return "writing"; }
    std::string title() const override;
    SettingsRows rows() override;
    void shown() override;

 private:
    SettingsRow engine();
    SettingsRow service() const;
    SettingsRow rules() const;
    void addModel(SettingsRows& rows);
    SettingsRow modelServer();
    SettingsRow modelKey();
    std::string whereLocalWrites() const;
    void useModelServer(const std::string& entered);
    void addStyle(SettingsRows& rows);

    SettingsStore& settings_;
    const AccountStore& account_;
    const OwnService& own_;
    ModelServer* const models_;
    std::string refused_;  // what was entered for the server's address and is none
    const std::function<void()> showAccount_;
};

}  // namespace dorix
