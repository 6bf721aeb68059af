#include "linux/x11/X11SelectionOwner.h"

#include <future>

namespace dorix {

X11SelectionOwner::X11SelectionOwner(const std::string& display, Delivered delivered) {
    runOnThread([&] {
        connection_ = X11Connection::open(loop_, loop_, display);
        if (!connection_) return;
        server_ = std::make_unique<X11SelectionServer>(*connection_, std::move(delivered));
        window_ = server_->window();
    });
}

// The server and its connection are destroyed here, when their thread no longer uses them.
X11SelectionOwner::~X11SelectionOwner() { loop_.stop(); }

template <typename Function>
void X11SelectionOwner::runOnThread(Function function) {
    std::promise<void> done;
    loop_.post([&] {
        function();
        done.set_value();
    });
    done.get_future().wait();
}

std::uint64_t X11SelectionOwner::take(xcb_atom_t selection, SelectionContents contents) {
    std::uint64_t offer = 0;
    runOnThread([&] {
        if (server_) offer = server_->take(selection, std::move(contents));
    });
    return offer;
}

void X11SelectionOwner::giveUp(xcb_atom_t selection) {
    runOnThread([&] {
        if (server_) server_->giveUp(selection);
    });
}

void X11SelectionOwner::replaceIfOwned(xcb_atom_t selection, SelectionContents contents) {
    runOnThread([&] {
        if (server_) server_->replaceIfOwned(selection, std::move(contents));
    });
}

}  // namespace dorix
