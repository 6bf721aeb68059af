#pragma once

#include "base/Observable.h"
#include "base/async/Completion.h"
#include "base/async/TaskScope.h"
#include "localdata/HistoryExport.h"
#include "platform/FileReplacer.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace dorix {

/// Writes the whole history to a file of the user's choice, away from the main executor. One at a time. Main
/// executor.
class PanelExport {
 public:
    /// `database` is the history's file. `background` does the work. All must outlive this; letting go of it
    /// stops an export.
    PanelExport(Executor& executor, WorkQueue& background, FileReplacer& files,
                std::filesystem::path database);
    ~PanelExport();
    PanelExport(const PanelExport&) = delete;
    PanelExport& operator=(const PanelExport&) = delete;

    /// Whether one is under way.
    Observable<bool> running;
    /// Called at the end of each that was not stopped: with words for the user, in the app language, when it
    /// failed.
    std::function<void(const std::optional<std::string>& failure)> onFinished = [](const auto&) {};

    /// The file is the old one, or none, until all of the new one is on the disk. Nothing happens while one
    /// is under way.
    void start(const std::filesystem::path& file, HistoryExportFormat format);
    /// The file stays as it was.
    void stop();
    /// Returns when none is under way.
    Task<void> settled();

 private:
    Task<void> run(std::filesystem::path file, HistoryExportFormat format, std::stop_token stop);

    WorkQueue& background_;
    FileReplacer& files_;
    const std::filesystem::path database_;
    std::stop_source stop_;
    std::optional<Completion<void>> last_;  // of the last one to begin, done when it has ended
    TaskScope tasks_;
};

}  // namespace dorix
