#include "linux/x11/X11ClipboardHeir.h"

#include <utility>

namespace dorix {

namespace {
// The server may yet have to hear that the program is gone.
constexpr double betweenLooks = 0.05;
constexpr int maxLooks = 40;
}  // namespace

X11ClipboardHeir::X11ClipboardHeir(Executor& executor, FdWatcher& watcher, const Pasteboard::Item& item,
                                   std::function<void()> finished)
    : finished_(std::move(finished)), connection_(X11Connection::open(executor, watcher)), timer_(executor) {
    if (!connection_) {
        finish();
        return;
    }
    connection_->onLost([this] { finish(); });
    server_.emplace(*connection_, [](const auto&) {});
    for (const auto& [type, data] : item) {
        const auto name = parsePasteboardType(type);
        contents_.put(connection_->atom(name.target), {connection_->atom(name.type), name.format, data});
    }
    cleared_ = connection_->listen(XCB_SELECTION_CLEAR, [this](const auto&) { finish(); });
    timer_.repeat(betweenLooks, [this] { tryToTake(); });
}

void X11ClipboardHeir::tryToTake() {
    const xcb_atom_t clipboard = connection_->atom("CLIPBOARD");
    const auto owner = connection_->reply(xcb_get_selection_owner_reply,
                                          xcb_get_selection_owner(connection_->get(), clipboard));
    if (owner && owner->owner == XCB_WINDOW_NONE) {
        timer_.stop();
        server_->take(clipboard, std::exchange(contents_, {}));
    } else if (++looks_ == maxLooks) {
        finish();
    }
}

/// Later, as what calls this may be in the middle of something.
void X11ClipboardHeir::finish() { timer_.once(0, finished_); }

}  // namespace dorix
