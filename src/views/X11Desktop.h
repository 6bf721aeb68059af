#pragma once

#include "base/Observable.h"

#include <QAbstractNativeEventFilter>
#include <QRegion>
#include <QWindow>
#include <functional>
#include <memory>
#include <optional>

struct xcb_connection_t;

namespace dorix {

/// What the floating windows ask of an X display beyond what the toolkit has. Main thread.
class X11Desktop final : public QAbstractNativeEventFilter {
 public:
    enum class Kind { utility, panel, notification, menu, tooltip };

    /// nullptr where the program does not draw on an X display.
    static std::unique_ptr<X11Desktop> find();

    ~X11Desktop() override;
    X11Desktop(const X11Desktop&) = delete;
    X11Desktop& operator=(const X11Desktop&) = delete;

    /// Whether somebody composites, so that windows may be translucent.
    Observable<bool> composited;

    /// Called when windows of other programs have been stacked anew, perhaps above ours.
    std::function<void()> onRestacked = [] {};

    /// Says what the window is, for compositors; before it is first shown.
    void dress(QWindow& window, Kind kind);

    /// Says how much of the window is its shadow, so that a window manager places what can be seen. In
    /// points.
    void setFrameExtents(QWindow& window, const QMargins& extents);

    bool hasWindowManager() const;
    /// The window that has the keyboard: the window manager's active one, or the focus itself; 0 for none.
    std::uint32_t frontWindow() const;
    /// Brings a window, ours or another's, to the front with the keyboard; nothing happens if it has gone.
    void bringToFront(std::uint32_t window);

    /// Cuts the window to the region, or makes it a rectangle again. In pixels.
    void setShape(QWindow& window, const std::optional<QRegion>& region);
    /// Where the window takes the pointer; elsewhere it goes to what lies below. In pixels.
    void setInputShape(QWindow& window, const QRegion& region);

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

 private:
    explicit X11Desktop(xcb_connection_t* connection);

    std::uint32_t atom(const char* name) const;
    std::uint32_t windowNamedBy(std::uint32_t window, const char* property) const;
    void watchCompositor();
    bool hasCompositor() const;
    void applyShape(QWindow& window, std::uint8_t kind, const std::optional<QRegion>& region);

    xcb_connection_t* const connection_;
    std::uint32_t root_ = 0;
    std::uint32_t compositorSelection_ = 0;
    std::uint32_t stacking_ = 0;
    std::uint8_t selectionEvent_ = 0;
};

}  // namespace dorix
