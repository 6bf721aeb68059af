#pragma once

#include "base/Json.h"
#include "base/async/ManualExecutor.h"
#include "fakes/MemoryUserDefaults.h"
#include "views/OverlayPanel.h"
#include "views/PanelBench.h"

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
    Style style_;
    QQmlEngine engine_;
    UnavailableWindowSystem windowSystem_;

 public:
    explicit Exhibit(const Style& style);
    virtual ~Exhibit();
    Exhibit(const Exhibit&) = delete;
    Exhibit& operator=(const Exhibit&) = delete;

    /// Shows a window at a place of the picture. Where nothing composites it has that shape, which is asked
    /// for when the window is at rest.
    void hang(std::unique_ptr<OverlayPanel> window, double radius, QPoint at,
              const std::function<QRectF()>& shape);
    /// Shows a window by itself: it fills the picture, and has a shadow on all sides.
    void hang(std::unique_ptr<OverlayPanel> window, double radius);

    QImage picture() const;

    QSize size;  // of the picture, in points
    ManualExecutor executor;
    MemoryUserDefaults defaults{Json{{"appLanguage", style_.language}}};
    PanelBench bench{executor, defaults};
    Theme theme;
    const ViewContext context{.executor = executor,
                              .defaults = defaults,
                              .engine = engine_,
                              .theme = theme,
                              .windowSystem = windowSystem_};

    struct Hung {
        std::unique_ptr<OverlayPanel> window;
        double radius;
        QPoint at;
        QRectF shape;
    };
    std::vector<Hung> windows;
};

/// A state of the program that is drawn, in each of the styles that make a difference to it.
struct Picture {
    std::string name;
    std::function<std::unique_ptr<Exhibit>(const Style&)> show;
    std::vector<Style> styles;
};

/// The states of the icon, the HUD beside it, the tooltip and the menu.
std::vector<Picture> iconPictures();
std::vector<Picture> panelPictures();
/// The states of the answer's card.
std::vector<Picture> cardPictures();
std::vector<Picture> largeCardPictures();
/// The states of the account's window.
std::vector<Picture> accountPictures();
/// The steps of the first run.
std::vector<Picture> onboardingPictures();
/// The pages of the settings.
std::vector<Picture> settingsPictures();
std::vector<Picture> largeSettingsPictures();
/// The panel on a display on which everything is twice as large.
std::vector<Picture> largePanelPictures();

}  // namespace dorix::testing
