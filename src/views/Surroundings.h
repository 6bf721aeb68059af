#pragma once

#include "base/async/Timer.h"
#include "platform/DesktopAppearance.h"
#include "views/OverlayPanel.h"

#include <QObject>
#include <QQmlEngine>
#include <functional>
#include <vector>

class QScreen;

namespace dorix {

/// What all windows stand in: the display with its screens, the look that the user wants, and the toolkit's
/// engine. Main thread.
class Surroundings {
 public:
    /// All must outlive it.
    Surroundings(Executor& executor, UserDefaults& defaults, DesktopAppearance& appearance,
                 WindowSystem& windowSystem);
    ~Surroundings();
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    const ViewContext& context() const { return context_; }

    /// Somebody began or ceased to composite: outlines are to be drawn anew.
    std::function<void()> onCompositorChanged = [] {};
    /// Windows of other programs may stand above ours.
    std::function<void()> onRestacked = [] {};
    /// A window of another program began or ceased to fill a screen.
    std::function<void()> onFullScreenChanged = [] {};
    /// Screens came, went or changed in size or scale; once for all that changes together.
    std::function<void()> onScreensChanged = [] {};

 private:
    void watchAppearance(DesktopAppearance& appearance);
    void watchWindowSystem(WindowSystem& windowSystem);
    void watchScreens();
    void watchScreen(QScreen* screen);
    void screensChanged();

    Theme theme_;
    QQmlEngine engine_;
    const ViewContext context_;
    QObject receiver_;  // of the toolkit's signals, which it outlives nothing with
    Timer screensTurn_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
