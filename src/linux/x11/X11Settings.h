#pragma once

#include "linux/x11/X11Connection.h"
#include "linux/x11/XSettings.h"

#include <functional>

namespace dorix {

/// The settings service of the display's desktop, which may come and go. The connection's thread.
class X11Settings {
 public:
    using Changed = std::function<void(const XSettings&)>;

    /// `changed` is told what holds now, at once, and again whenever something else does; with nothing in it
    /// where there is no service. The connection must outlive this.
    X11Settings(X11Connection& connection, Changed changed);
    X11Settings(const X11Settings&) = delete;
    X11Settings& operator=(const X11Settings&) = delete;

 private:
    void findService();
    void read();

    X11Connection& connection_;
    const Changed changed_;
    xcb_window_t service_ = XCB_WINDOW_NONE;
    X11Connection::Token serviceComes_;
    X11Connection::Token serviceGoes_;
    X11Connection::Token settingsChange_;
};

}  // namespace dorix
