#include "linux/qt/ToolkitDisplay.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdlib>

namespace dorix {

namespace {

QNativeInterface::QX11Application* onX11() {
    return qGuiApp == nullptr ? nullptr : qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
}

}  // namespace

bool toolkitFindsDisplay() {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (!platform.isEmpty() && !platform.startsWith("xcb")) return true;
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool works = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return works;
}

bool toolkitDrawsOnX11() { return onX11() != nullptr; }

void finishToolkitRequests() {
    auto* connection = onX11()->connection();
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

}  // namespace dorix
