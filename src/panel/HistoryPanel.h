#pragma once

#include "base/async/TaskScope.h"
#include "localdata/HistoryStore.h"
#include "panel/PanelActions.h"
#include "panel/PanelClipboard.h"
#include "panel/PanelDeletions.h"
#include "panel/PanelExport.h"
#include "panel/PanelList.h"
#include "panel/PanelSelection.h"
#include "platform/SavePanel.h"
#include "platform/UrlOpener.h"

#include <filesystem>
#include <functional>
#include <string>

namespace dorix {

/// The panel but for its window: what it lists and shows, and what the user can do there. Main executor.
class HistoryPanel {
 public:
    /// All must outlive it.
    struct Environment {
        Executor& executor;
        WorkQueue& background;
        AppState& state;
        HistoryStore& history;
        std::filesystem::path database;
        Pasteboard& pasteboard;
        SavePanel& savePanel;
        FileReplacer& files;
        UrlOpener& urls;
    };

    explicit HistoryPanel(Environment environment);
    HistoryPanel(const HistoryPanel&) = delete;
    HistoryPanel& operator=(const HistoryPanel&) = delete;

    PanelList list;
    PanelSelection selection;
    PanelDeletions deletions;
    PanelClipboard clipboard;
    /// `copy` and `remove` are filled here, the others by whoever can do what they ask.
    PanelActions actions;

    /// Whether the user is asked where an export is to go.
    bool isAsking() const { return isAsking_; }
    /// The user has answered, or the dialog has gone without.
    std::function<void()> onAsked = [] {};
    /// Told how an export ended: where it lies, or why there is none, in the app language.
    std::function<void(const std::string& words, bool failed)> onExported = [](const auto&, bool) {};

    /// Asks where, above the window of that number, and writes the whole history there.
    void exportHistory(HistoryExportFormat format, std::uint64_t ownWindow);

    /// Returns when no export is being written.
    Task<void> settled() { return exporter_.settled(); }

    /// Opens an address that stands in a text: only one of the web's, as the text may be anybody's.
    void openLink(const std::string& url);

 private:
    Task<void> askAndExport(HistoryExportFormat format, std::uint64_t ownWindow);

    const Environment env_;
    PanelExport exporter_;
    bool isAsking_ = false;
    TaskScope tasks_;
};

}  // namespace dorix
