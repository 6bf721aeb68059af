#pragma once

#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "memory/MemoryController.h"
#include "platform/UserFiles.h"
#include "settings/EmbeddingRow.h"
#include "settings/SettingsSection.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace dorix {

/// What is remembered of the user's documents and of their work, and how to be rid of it.
class MemorySection final : public SettingsSection {
 public:
    /// All must outlive it.
    struct Parts {
        Executor& executor;
        MemoryController& memory;
        EmbeddingModel& model;
        FolderPanel& folderPanel;
        std::filesystem::path home;  // of the user
    };

    explicit MemorySection(const Parts& parts);

    /// Above which window the desktop's dialog stands.
    std::function<std::uint64_t()> ownWindow = [] { return 0; };

    std::string id() const override { return "memory"; }
    std::string title() const override;
    SettingsRows rows() override;
    void shown() override;
    void hidden() override;
    bool stepBack() override;

 private:
    void changedOften();
    SettingsRow documents();
    SettingsRow index();
    void addFolders(SettingsRows& rows);
    SettingsRow folder(const std::filesystem::path& path);
    SettingsRow adding();
    SettingsRow typing();
    SettingsRow activity();
    SettingsRow clearing();
    void pressIndex(const std::string& button);
    void pressActivity(const std::string& button);
    void type(const std::string& text);
    Task<void> addFolder();
    Task<void> clearActivity();

    const Parts parts_;
    EmbeddingRow model_;
    bool isChoosing_ = false;  // the desktop's dialog is open
    bool isTyping_ = false;    // nobody can ask for a folder: its path is typed
    bool isWrong_ = false;     // what was typed
    bool isRefused_ = false;   // the folder that was chosen
    bool isClearing_ = false;  // waits for the user's second word
    bool isCleared_ = false;
    Timer soon_;
    TaskScope tasks_;
};

}  // namespace dorix
