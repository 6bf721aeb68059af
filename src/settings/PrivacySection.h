#pragma once

#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "localdata/HistoryStore.h"
#include "permissions/Permissions.h"
#include "platform/Processes.h"
#include "settings/SettingsSection.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// What the system lets the program do, what it keeps, where, and how to be rid of it.
class PrivacySection final : public SettingsSection {
 public:
    struct Parts {
        Executor& executor;
        Permissions& permissions;
        HistoryStore& history;
        UrlOpener& urls;
        std::filesystem::path data;      // the folder of what the user has made, and of the models
        std::filesystem::path settings;  // the file of the settings
    };

    /// What it refers to must outlive it.
    explicit PrivacySection(const Parts& parts);

    std::string id() const override { return "privacy"; }
    std::string title() const override;
    SettingsRows rows() override;
    void shown() override;
    void hidden() override;
    bool stepBack() override;

 private:
    /// What lies on the disk, in bytes.
    struct Sizes {
        std::uint64_t history = 0;
        std::uint64_t models = 0;
        std::uint64_t settings = 0;
    };

    void addPermissions(SettingsRows& rows);
    SettingsRow history();
    SettingsRow clearing();
    SettingsRow stored(const std::string& id, const std::string& label, const std::filesystem::path& place,
                       std::optional<std::uint64_t> size) const;
    void addStored(SettingsRows& rows);
    void pressHistory(const std::string& button);
    void openFolder();
    Task<void> measure();
    static Sizes sizesIn(const std::filesystem::path& data, const std::filesystem::path& settings);

    const Parts parts_;
    std::size_t count_ = 0;  // of the history's items
    bool isClearing_ = false;
    bool cannotOpen_ = false;
    std::optional<Sizes> sizes_;
    std::vector<Subscription> subscriptions_;
    SerialExecutor disk_{SerialExecutor::AtEnd::drop};
    TaskScope tasks_;
};

}  // namespace dorix
