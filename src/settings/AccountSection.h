#pragma once

#include "cloud/AccountStore.h"
#include "cloud/OwnService.h"
#include "settings/SettingsSection.h"

#include <functional>
#include <string>

namespace dorix {

/// Whose session it is, and the way to the account's window.
class AccountSection final : public SettingsSection {
 public:
    /// All must outlive it. `showAccount` opens the account's window.
    AccountSection(const AccountStore& account, const OwnService& own, std::function<void()> showAccount);

    std::string id() const override { return "account"; }
    std::string title() const override;
    SettingsRows rows() override;

 private:
    const AccountStore& account_;
    const OwnService& own_;
    const std::function<void()> showAccount_;
};

}  // namespace dorix
