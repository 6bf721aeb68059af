#pragma once

#include "context/Glyph.h"
#include "localdata/HistoryStore.h"
#include "panel/PanelClipboard.h"
#include "panel/PanelComposer.h"
#include "panel/PanelDeletions.h"
#include "panel/PanelExport.h"
#include "panel/PanelList.h"
#include "panel/PanelPlacement.h"
#include "panel/PanelSelection.h"
#include "panel/PanelVerbs.h"
#include "platform/Processes.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace dorix {

/// The panel but for its window: what it lists and shows, and what the user can do there. Main executor.
class HistoryPanel {
 public:
    /// All must outlive it.
    HistoryPanel(Executor& executor, AppState& state, SpeechInput& speech, HistoryStore& history,
                 Pasteboard& pasteboard, UrlOpener& urls, PanelExport& exports);
    HistoryPanel(const HistoryPanel&) = delete;
    HistoryPanel& operator=(const HistoryPanel&) = delete;

    PanelList list;
    PanelSelection selection;
    PanelDeletions deletions;
    PanelClipboard clipboard;
    /// `copy` and `remove` are filled here, the others by whoever can do what they ask.
    PanelActions actions;
    /// The id of what is being read aloud, kept by whoever has it read.
    Observable<std::optional<std::string>> speakingID;
    PanelComposer composer;
    PanelLayout layout;
    PanelExport& exporter;
    /// The number of the panel's window, for dialogs of the desktop above it; 0 for none.
    std::uint64_t windowNumber = 0;

    /// How the tables of applications call one that this system calls so.
    std::function<std::string(const std::string&)> tableIdentifier = [](const auto& name) { return name; };

    /// The icon of the item's row.
    Ph icon(const HistoryItem& item) const;

    /// Asks where, and writes the whole history there.
    void exportHistory(HistoryExportFormat format) { exporter.ask(format, windowNumber); }

    /// Opens an address that stands in a text: only one of the web's, as the text may be anybody's.
    void openLink(const std::string& url);

    /// Goes that many sections down, up with a negative number, and stops at the ends.
    void moveSection(int by);

 private:
    AppState& state_;
    UrlOpener& urls_;
    Subscription shownItem_;
};

}  // namespace dorix
