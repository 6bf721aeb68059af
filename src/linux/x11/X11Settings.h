#pragma once

#include "linux/x11/X11Connection.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace dorix {

/// What a desktop's settings service tells the programs on its X display, by name ("Net/ThemeName"). Whole
/// numbers are written in decimal; colours are left out.
using XSettings = std::map<std::string, std::string, std::less<>>;

/// Reads the property that such a service keeps on its window (XSETTINGS, version 0.5). What cannot be
/// understood, and all that follows it, is left out.
XSettings parseXSettings(std::string_view bytes);

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
    Subscription serviceComes_;
    Subscription serviceGoes_;
    Subscription settingsChange_;
};

}  // namespace dorix
