#pragma once

#include "base/async/ManualExecutor.h"
#include "fakes/MemoryUserDefaults.h"
#include "views/OverlayPanel.h"

#include <QImage>
#include <QQmlEngine>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorix::testing {

/// How a state of the program is to be drawn.
struct Style {
    std::string language = "es";
    bool dark = false;
    bool composited = true;
};

/// Windows of the program in one state, off screen and at rest: nothing of what they show depends on time or
/// place. One at a time, for the language is the process's.
class Exhibit {
 public:
    virtual ~Exhibit();
    Exhibit(const Exhibit&) = delete;
    Exhibit& operator=(const Exhibit&) = delete;

    /// A window, its place in the picture, and the shape that it has where nothing composites.
    struct Hung {
        OverlayPanel& window;
        QPoint at;
        QRectF shape;
        double radius;
    };
    const std::vector<Hung>& windows() const { return windows_; }

    /// The windows over a plain ground, cut to their shapes where nothing composites.
    QImage picture() const;

 protected:
    explicit Exhibit(const Style& style);

    /// Shows the window, which is the heir's, and waits until it is at rest.
    static void show(OverlayPanel& window);
    void hang(const Hung& window) { windows_.push_back(window); }

    QSize size;  // of the picture, in points
    ManualExecutor executor;
    MemoryUserDefaults defaults;
    Theme theme;

 private:
    QQmlEngine engine_;
    const Style style_;
    std::vector<Hung> windows_;

 protected:
    const ViewContext context{.engine = engine_, .theme = theme};
};

/// A state of the program that is drawn, in each of the styles that make a difference to it.
struct Picture {
    std::string name;
    std::function<std::unique_ptr<Exhibit>(const Style&)> show;
    std::vector<Style> styles{{}, {.language = "en", .dark = true}};
};

/// The states of the icon, the HUD beside it, the tooltip and the menu.
std::vector<Picture> iconPictures();
std::vector<Picture> panelPictures();
/// The panel on a display on which everything is twice as large.
std::vector<Picture> largePanelPictures();

}  // namespace dorix::testing
