#pragma once

#include "platform/WindowSystem.h"
#include "views/Theme.h"

#include <QQmlPropertyMap>
#include <QQuickView>
#include <functional>

namespace dorix {

class Executor;
class UserDefaults;

/// What the floating windows have in common. They need the engine, whose context knows the theme.
struct ViewContext {
    Executor& executor;
    UserDefaults& defaults;
    QQmlEngine& engine;
    Theme& theme;
    WindowSystem& windowSystem;
};

/// A window that floats above all others, on every workspace, known to no window manager unless it is the
/// panel. Its QML file finds what it shows in the property `view`. Main thread.
class OverlayPanel : public QQuickView {
 public:
    enum class Focusable { no, yes };

    OverlayPanel(const ViewContext& context, WindowSystem::Kind kind, Focusable focusable);

    /// Whether it may take the keyboard.
    bool isFocusable() const { return focusable_ == Focusable::yes; }

    /// Called for Esc; without it Esc goes on to whoever else wants it.
    std::function<void()> onCancel;

    /// What the QML file shows.
    QQmlPropertyMap& view() { return view_; }

    /// Shows the window without taking the focus, above all others.
    void orderFrontRegardless();
    void orderOut();

    /// Draws in the scale that the screen has by now; for a window that shows.
    void rescale();

 protected:
    /// Loads the file; once, when `view` has what it needs.
    void load(const char* file, QVariantMap properties = {});

    /// Cuts the window to a rounded rectangle, in points, where nothing composites.
    void cutTo(const QRectF& shape, qreal radius);
    /// Takes the pointer within a rounded rectangle, in points, alone.
    void takePointerIn(const QRectF& shape, qreal radius);

    /// Tells a screen reader of an item that the focus does not come to; a part of the file's root by that
    /// name.
    void announce(const char* part);

    /// Sets `byKeyboard` of what is shown: whether the user goes about by keyboard, as the event tells.
    void noteKeyboard(const QEvent& event);

    /// Of its last show() or rescale().
    qreal drawnScale() const { return drawnScale_; }

    const ViewContext& context() const { return context_; }
    void keyPressEvent(QKeyEvent* event) override;

 private:
    WindowSystem::Region pixels(const QRectF& shape, qreal radius) const;

    const ViewContext context_;
    const Focusable focusable_;
    QQmlPropertyMap view_;
    qreal drawnScale_ = 0;
    bool isCut_ = false;
};

}  // namespace dorix
