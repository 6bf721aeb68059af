#pragma once

#include "base/Observable.h"
#include "base/async/Completion.h"
#include "base/async/TaskScope.h"
#include "localdata/HistoryExport.h"
#include "platform/UserFiles.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace dorix {

/// Asks where to, and writes the whole history to that file, away from the main executor. One at a time. Main
/// executor.
class PanelExport {
 public:
    /// `database` is the history's file. `background` does the work. All must outlive this; letting go of it
    /// stops an export.
    PanelExport(Executor& executor, Executor& background, SavePanel& savePanel, FileReplacer& files,
                std::filesystem::path database);
    ~PanelExport();
    PanelExport(const PanelExport&) = delete;
    PanelExport& operator=(const PanelExport&) = delete;

    /// Whether one is under way.
    Observable<bool> running;
    /// Called at the end of each that was not stopped, with words for the user, in the app language: where it
    /// lies, or why there is none.
    std::function<void(const std::string& words, bool failed)> onFinished = [](const auto&, bool) {};

    /// Whether the user is being asked.
    bool isAsking() const { return isAsking_; }
    /// The user has answered, or the dialog has gone without.
    std::function<void()> onAsked = [] {};

    /// Asks where, above the window of that number, and starts. Nothing happens while one is under way.
    void ask(HistoryExportFormat format, std::uint64_t ownWindow);

    /// The file is the old one, or none, until all of the new one is on the disk. Nothing happens while one
    /// is under way.
    void start(const std::filesystem::path& file, HistoryExportFormat format);
    /// The file stays as it was.
    void stop();
    /// Returns when none is under way.
    Task<void> settled();

 private:
    Task<void> askAndStart(HistoryExportFormat format, std::uint64_t ownWindow);
    Task<void> run(std::filesystem::path file, HistoryExportFormat format, std::stop_token stop);

    Executor& background_;
    SavePanel& savePanel_;
    FileReplacer& files_;
    const std::filesystem::path database_;
    bool isAsking_ = false;
    std::stop_source stop_;
    std::optional<Completion<void>> last_;  // of the last one to begin, done when it has ended
    TaskScope tasks_;
};

}  // namespace dorix
