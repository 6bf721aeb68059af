#include "views/Surroundings.h"

#include <QGuiApplication>
#include <QQmlContext>
#include <QScreen>

namespace dorix {

Surroundings::Surroundings(Executor& executor, UserDefaults& defaults, DesktopAppearance& appearance,
                           WindowSystem& windowSystem)
    : context_{.executor = executor,
               .defaults = defaults,
               .engine = engine_,
               .theme = theme_,
               .windowSystem = windowSystem},
      screensTurn_(executor) {
    engine_.rootContext()->setContextProperty("theme", &theme_.map());
    watchAppearance(appearance);
    watchWindowSystem(windowSystem);
    watchScreens();
}

Surroundings::~Surroundings() {
    context_.windowSystem.onRestacked = [] {};
    context_.windowSystem.onFullScreenChanged = [] {};
}

void Surroundings::watchAppearance(DesktopAppearance& appearance) {
    theme_.setDark(appearance.prefersDark.get());
    theme_.setReducesMotion(appearance.reducesMotion.get());
    subscriptions_.push_back(appearance.prefersDark.subscribe([this](bool dark) { theme_.setDark(dark); }));
    subscriptions_.push_back(
        appearance.reducesMotion.subscribe([this](bool less) { theme_.setReducesMotion(less); }));
}

void Surroundings::watchWindowSystem(WindowSystem& windowSystem) {
    theme_.setComposited(windowSystem.composited.get());
    subscriptions_.push_back(windowSystem.composited.subscribe([this](bool composited) {
        theme_.setComposited(composited);
        onCompositorChanged();
    }));
    windowSystem.onRestacked = [this] { onRestacked(); };
    windowSystem.onFullScreenChanged = [this] { onFullScreenChanged(); };
}

void Surroundings::watchScreens() {
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &receiver_, [this](QScreen* screen) {
        watchScreen(screen);
        screensChanged();
    });
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &receiver_, [this] { screensChanged(); });
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &receiver_,
                     [this] { screensChanged(); });
    for (QScreen* screen : QGuiApplication::screens()) watchScreen(screen);
}

void Surroundings::watchScreen(QScreen* screen) {
    QObject::connect(screen, &QScreen::geometryChanged, &receiver_, [this] { screensChanged(); });
    QObject::connect(screen, &QScreen::availableGeometryChanged, &receiver_, [this] { screensChanged(); });
    QObject::connect(screen, &QScreen::physicalDotsPerInchChanged, &receiver_, [this] { screensChanged(); });
    QObject::connect(screen, &QScreen::logicalDotsPerInchChanged, &receiver_, [this] { screensChanged(); });
}

/// The toolkit tells of one change in several signals, some of them before all is as it will be.
void Surroundings::screensChanged() {
    screensTurn_.once(0, [this] { onScreensChanged(); });
}

}  // namespace dorix
