#pragma once

#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "localdata/HistoryStore.h"
#include "memory/MemoryController.h"
#include "permissions/Permissions.h"
#include "platform/Processes.h"
#include "settings/SettingsSection.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace dorix {

/// What the system lets the program do, what it keeps, where, and how to be rid of it.
class PrivacySection final : public SettingsSection {
 public:
    struct Parts {
        Executor& executor;
        Permissions& permissions;
        HistoryStore& history;
        MemoryController& memory;
        UrlOpener& urls;
        const Observable<std::string>& speechServer;  // its address; empty where this computer recognises
        std::filesystem::path data;      // the folder of what the user has made, and of the models
        std::filesystem::path settings;  // the file of the settings
        std::filesystem::path service;   // the folder of the service that runs here
        std::filesystem::path secrets;   // the file of secrets where the system keeps none
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
        std::uint64_t memory = 0;
        std::uint64_t models = 0;
        std::uint64_t embedding = 0;
        std::uint64_t settings = 0;
        std::uint64_t service = 0;
    };

    void addPermissions(SettingsRows& rows);
    SettingsRow history();
    SettingsRow clearing();
    SettingsRow memory();
    SettingsRow clearingMemory();
    SettingsRow stored(const std::string& id, const std::string& label, const std::filesystem::path& place,
                       std::optional<std::uint64_t> size) const;
    void addStored(SettingsRows& rows);
    void pressHistory(const std::string& button);
    void pressMemory(const std::string& button);
    Task<void> clearMemory();
    void openFolder();
    Task<void> measure();
    static Sizes sizesOf(const Parts& parts);

    const Parts parts_;
    std::size_t count_ = 0;  // of the history's items
    bool isClearing_ = false;
    bool cannotClear_ = false;
    bool isClearingMemory_ = false;
    bool cannotOpen_ = false;
    std::optional<Sizes> sizes_;
    SerialExecutor disk_{SerialExecutor::AtEnd::drop};
    TaskScope tasks_;
};

}  // namespace dorix
