#pragma once

#include "base/Observable.h"
#include "base/async/Timer.h"
#include "localdata/HistoryItem.h"
#include "platform/Pasteboard.h"

#include <optional>
#include <string>

namespace dorix {

/// Copies answers, to stay on the clipboard. Main executor.
class PanelClipboard {
 public:
    /// All must outlive it.
    PanelClipboard(Executor& executor, Pasteboard& pasteboard) : pasteboard_(pasteboard), forget_(executor) {}

    /// The id of the item that was copied a moment ago.
    Observable<std::optional<std::string>> copiedID;

    /// Puts the item's answer on the clipboard, its Markdown as it is. One without an answer leaves the
    /// clipboard alone.
    void copy(const HistoryItem& item);

 private:
    Pasteboard& pasteboard_;
    Timer forget_;
};

}  // namespace dorix
