#pragma once

#include "base/async/Timer.h"
#include "linux/x11/X11Connection.h"
#include "linux/x11/X11SelectionServer.h"
#include "platform/Pasteboard.h"

#include <functional>
#include <memory>
#include <optional>

namespace dorix {

/// Offers what a program that died had on the clipboard, or was about to put back there, until somebody else
/// takes the clipboard. On the executor's thread.
class X11ClipboardHeir {
 public:
    /// `finished` is called once, later: the clipboard is another application's, or there is no display. It
    /// may destroy the heir.
    X11ClipboardHeir(Executor& executor, FdWatcher& watcher, const Pasteboard::Item& item,
                     std::function<void()> finished);

 private:
    void tryToTake();
    void finish();

    const std::function<void()> finished_;
    std::unique_ptr<X11Connection> connection_;
    std::optional<X11SelectionServer> server_;
    SelectionContents contents_;
    int looks_ = 0;
    Timer timer_;
    Subscription cleared_;
};

}  // namespace dorix
