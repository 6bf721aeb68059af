#pragma once

#include "base/async/TaskScope.h"
#include "context/SelectionProbe.h"

namespace dorix {

class Accessibility;
class EventPoster;
class Pasteboard;
class UserClipboard;

/// Reads what is selected in an application. Main executor; its collaborators outlive it.
class TextSelection final : public SelectionProbe {
 public:
    TextSelection(Executor& executor, Accessibility& accessibility, UserClipboard& clipboard,
                  Pasteboard& pasteboard, EventPoster& poster, Workspace& workspace)
        : accessibility_(accessibility),
          clipboard_(clipboard),
          pasteboard_(pasteboard),
          poster_(poster),
          workspace_(workspace),
          tasks_(executor) {}

    /// Asks accessibility, which may block for one budget. An application that does not tell is asked to copy
    /// only when `insist`, it is in front, and what is on the clipboard can be given back, as it is after at
    /// most 0.3 s unless the user has copied something meanwhile. A stop request does not cut that short.
    Task<std::optional<SelectedText>> selection(std::optional<RunningApplication> app, bool insist) override;

 private:
    std::optional<SelectedText> ask(const RunningApplication& app);
    Task<std::optional<SelectedText>> copyProbe(RunningApplication app);

    Accessibility& accessibility_;
    UserClipboard& clipboard_;
    Pasteboard& pasteboard_;
    EventPoster& poster_;
    Workspace& workspace_;
    TaskScope tasks_;
};

}  // namespace dorix
