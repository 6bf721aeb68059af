#pragma once

#include "base/async/ManualExecutor.h"
#include "dictation/AppState.h"
#include "fakes/MemoryUserDefaults.h"
#include "overlay/IconLook.h"
#include "views/overlay/FloatingIconWindow.h"
#include "views/overlay/HUDWindow.h"
#include "views/overlay/MenuWindow.h"

#include <QImage>
#include <QQmlEngine>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorix::testing {

/// A state of the program, and its name in lists of pictures.
struct Scene {
    std::string name;
    std::function<void(AppState&)> set = [](AppState&) {};
    std::string partial;
    bool paused = false;
    bool atLeftEdge = false;
};

/// Every state that the icon and the HUD have looks for.
std::vector<Scene> scenes();

/// How a scene is to be drawn.
struct Style {
    std::string language = "es";
    bool dark = false;
    bool composited = true;
};

/// Draws the real windows off screen, at rest: nothing in the picture depends on time.
class Gallery {
 public:
    Gallery();
    ~Gallery();

    /// The icon with the HUD beside it, on a plain ground, as large as the two need at most.
    QImage picture(const Scene& scene, const Style& style);
    /// The icon's menu with its second row chosen.
    QImage menuPicture(const Style& style);
    QImage tooltipPicture(const Style& style);

 private:
    void apply(const Style& style);
    QImage ground(const Style& style, QSize points) const;
    QImage alone(QQuickView& window, const Style& style) const;

    ManualExecutor executor_;
    MemoryUserDefaults defaults_;
    Theme theme_;
    QQmlEngine engine_;
    ViewContext context_{.engine = engine_, .theme = theme_};
    std::unique_ptr<FloatingIconWindow> icon_;
    std::unique_ptr<HUDWindow> hud_;
};

}  // namespace dorix::testing
