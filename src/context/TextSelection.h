#pragma once

#include "base/async/TaskScope.h"
#include "context/SelectionProbe.h"

namespace dorix {

class Accessibility;
class Pasteboard;
class TextInserter;

/// Reads what is selected in an application. Main executor; its collaborators outlive it.
class TextSelection final : public SelectionProbe {
 public:
    TextSelection(Executor& executor, Accessibility& accessibility, Pasteboard& pasteboard,
                  TextInserter& inserter)
        : accessibility_(accessibility), pasteboard_(pasteboard), inserter_(inserter), tasks_(executor) {}

    /// Asks accessibility, which may block for one budget. An application that does not tell is asked to copy
    /// only when `insist`: that takes up to 0.3 s and gives the clipboard back. A stop request does not cut
    /// the copy short, so that the clipboard is given back.
    Task<std::optional<SelectedText>> selection(std::optional<RunningApplication> app, bool insist) override;

 private:
    std::optional<SelectedText> ask(const RunningApplication& app);
    Task<std::optional<SelectedText>> copyProbe();

    Accessibility& accessibility_;
    Pasteboard& pasteboard_;
    TextInserter& inserter_;
    TaskScope tasks_;
};

}  // namespace dorix
