#include "panel/HistoryPanel.h"

#include "base/text/Url.h"
#include "context/AppContext.h"
#include "panel/PanelSections.h"

#include <algorithm>
#include <optional>

namespace dorix {

HistoryPanel::HistoryPanel(Executor& executor, AppState& state, SpeechInput& speech, HistoryStore& history,
                           Pasteboard& pasteboard, UrlOpener& urls, PanelExport& exports)
    : list(executor, state, history),
      selection(state, history, list),
      deletions(executor, state, history),
      clipboard(executor, pasteboard),
      composer(state, speech, actions),
      exporter(exports),
      state_(state),
      urls_(urls),
      shownItem_(selection.observe([this](PanelSelection::Change) {
          if (selection.item() == nullptr) layout.detailOpen.set(false);
      })) {
    actions.copy = [this](const HistoryItem& item) { clipboard.copy(item); };
    actions.remove = [this](const HistoryItem& item) { deletions.remove(std::string(item.id)); };
}

Ph HistoryPanel::icon(const HistoryItem& item) const {
    return storedRowIcon(item.app,
                         item.bundleID ? std::optional(tableIdentifier(*item.bundleID)) : std::nullopt);
}

void HistoryPanel::openLink(const std::string& url) {
    if (isWebAddress(url)) urls_.open(url);
}

void HistoryPanel::moveSection(int by) {
    const auto at = std::ranges::find(allPanelSections, state_.section.get()) - allPanelSections.begin();
    const auto last = std::ssize(allPanelSections) - 1;
    const auto next = std::clamp<std::ptrdiff_t>(at + by, 0, last);
    state_.section.set(allPanelSections.at(static_cast<std::size_t>(next)));
}

}  // namespace dorix
