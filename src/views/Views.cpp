#include "views/Views.h"

#include "overlay/HUDPresenter.h"
#include "overlay/IconLook.h"
#include "overlay/LevelFeed.h"
#include "views/DesktopWords.h"
#include "views/ScreenMap.h"
#include "views/Theme.h"
#include "views/X11Desktop.h"
#include "views/overlay/FloatingIconWindow.h"
#include "views/overlay/HUDWindow.h"
#include "views/overlay/MenuWindow.h"
#include "views/panel/PanelWindow.h"

#include <QGuiApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QScreen>
#include <utility>
#include <vector>

namespace dorix {

namespace {
constexpr double keepHiddenPanel = 600;  // seconds
}

/// The icon does not leave the screen and never has the keyboard.
class Views::IconOnScreen final : public AppWindow {
 public:
    explicit IconOnScreen(FloatingIconWindow& icon) : icon_(icon) {}

    bool place() override {
        icon_.place();
        return false;
    }
    void show() override { icon_.orderFrontRegardless(); }
    void hide() override { icon_.orderOut(); }
    void takeKeyboard() override {}
    void clickedOutside() override {}

 private:
    FloatingIconWindow& icon_;
};

/// The panel's window is made when it is first shown, and let go when long unused.
class Views::PanelOnDemand final : public AppWindow {
 public:
    explicit PanelOnDemand(Parts& parts) : parts_(parts) {}

    bool place() override;
    void show() override;
    void hide() override;
    void takeKeyboard() override;
    void clickedOutside() override;

 private:
    Parts& parts_;
};

struct Views::Parts {
    Parts(const Environment& environment, Verbs given);

    void wireIcon();
    void wireHUD();
    void watchState();
    void watchAppearance();
    void watchScreens();
    void watchScreen(QScreen* screen);

    void showState();
    void refreshTooltip() { icon.setTooltip(desktopWords(verbs.iconTooltip())); }
    void placeHUD();
    void placeAnew();
    void raise();
    void reshape();

    const Environment env;
    const Verbs verbs;
    const std::unique_ptr<X11Desktop> x11 = X11Desktop::find();
    Theme theme;
    QQmlEngine engine;
    ViewContext context{.engine = engine, .theme = theme, .x11 = x11.get()};
    HUDPresenter presenter;
    LevelFeed level;
    FloatingIconWindow icon;
    std::unique_ptr<HUDWindow> hud;      // made when first shown
    std::unique_ptr<PanelWindow> panel;  // likewise, and let go when long unused
    QObject receiver;                    // of the toolkit's signals, which it outlives nothing with
    std::vector<Subscription> bag;
    Timer screensTurn;
    Timer dropPanel;
    IconOnScreen iconOnScreen{icon};
    PanelOnDemand panelOnDemand{*this};

    PanelWindow& panelWindow();

 private:
    HUDWindow& hudWindow();
    static QQmlEngine& prepared(QQmlEngine& engine, Theme& theme);
};

Views::Parts::Parts(const Environment& environment, Verbs given)
    : env(environment),
      verbs(std::move(given)),
      presenter(env.executor, env.state, env.speech.partial),
      level(env.executor, env.speech.level),
      icon({.engine = prepared(engine, theme), .theme = theme, .x11 = x11.get()}, env.executor, env.defaults),
      screensTurn(env.executor),
      dropPanel(env.executor) {
    watchAppearance();
    wireIcon();
    wireHUD();
    watchState();
    watchScreens();
}

QQmlEngine& Views::Parts::prepared(QQmlEngine& engine, Theme& theme) {
    engine.rootContext()->setContextProperty("theme", &theme.map());
    return engine;
}

void Views::Parts::wireIcon() {
    icon.onClick = verbs.iconClicked;
    icon.onMoved = [this] {
        if (presenter.isOrderedIn.get()) placeHUD();
    };
    icon.menuProvider = verbs.iconMenu;
    refreshTooltip();
}

/// The window and its scene take memory that a day without a dictation has no use for.
HUDWindow& Views::Parts::hudWindow() {
    if (!hud) {
        hud = std::make_unique<HUDWindow>(context);
        hud->setContent(presenter.content.get());
    }
    return *hud;
}

PanelWindow& Views::Parts::panelWindow() {
    dropPanel.stop();
    if (!panel) {
        panel = std::make_unique<PanelWindow>(context, PanelWindow::Environment{.executor = env.executor,
                                                                                .defaults = env.defaults,
                                                                                .state = env.state,
                                                                                .settings = env.settings,
                                                                                .speech = env.speech,
                                                                                .panel = env.panel});
    }
    return *panel;
}

void Views::Parts::wireHUD() {
    presenter.onPlace = [this] { placeHUD(); };
    bag.push_back(presenter.content.subscribe([this](const HUDContent& now) {
        if (hud) hud->setContent(now);
    }));
    bag.push_back(presenter.isOrderedIn.subscribe([this](bool ordered) {
        icon.setTooltipEnabled(!ordered);  // both stand in the same place
        ordered ? hudWindow().orderFrontRegardless() : hudWindow().orderOut();
    }));
    bag.push_back(presenter.isShown.subscribe([this](bool shown) { hudWindow().setShown(shown); }));
    bag.push_back(level.shown.subscribe([this](double now) {
        icon.setLevel(now);
        if (hud) hud->setLevel(now);
    }));
}

void Views::Parts::watchState() {
    bag.push_back(env.state.hud.subscribe([this](const HUDPhase&) { showState(); }));
    bag.push_back(env.settings.paused.subscribe([this](bool) { showState(); }));
    bag.push_back(env.state.panelOpen.subscribe([this](bool open) {
        if (!open && panel) panel->fade();
    }));
    bag.push_back(env.settings.languageObserver().code.subscribe([this](const std::string&) {
        refreshTooltip();
        presenter.retranslate();
    }));
    showState();
}

void Views::Parts::showState() {
    const auto kind = env.state.hud.get().kind;
    icon.setLook(iconLook(kind, env.settings.paused.get()));
    level.setActive(kind == HUDPhase::Kind::listening);
    // An open menu has the keyboard, and would get what is typed for the user.
    if (kind == HUDPhase::Kind::listening) icon.closeMenu();
}

void Views::Parts::watchAppearance() {
    theme.setDark(env.appearance.prefersDark.get());
    theme.setReducesMotion(env.appearance.reducesMotion.get());
    bag.push_back(env.appearance.prefersDark.subscribe([this](bool dark) { theme.setDark(dark); }));
    bag.push_back(
        env.appearance.reducesMotion.subscribe([this](bool less) { theme.setReducesMotion(less); }));
    if (!x11) return;
    theme.setComposited(x11->composited.get());
    bag.push_back(x11->composited.subscribe([this](bool composited) {
        theme.setComposited(composited);
        reshape();
    }));
    x11->onRestacked = [this] { raise(); };
}

void Views::Parts::watchScreens() {
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &receiver, [this](QScreen* screen) {
        watchScreen(screen);
        placeAnew();
    });
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &receiver, [this] { placeAnew(); });
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &receiver, [this] { placeAnew(); });
    for (QScreen* screen : QGuiApplication::screens()) watchScreen(screen);
}

void Views::Parts::watchScreen(QScreen* screen) {
    QObject::connect(screen, &QScreen::geometryChanged, &receiver, [this] { placeAnew(); });
    QObject::connect(screen, &QScreen::availableGeometryChanged, &receiver, [this] { placeAnew(); });
    QObject::connect(screen, &QScreen::physicalDotsPerInchChanged, &receiver, [this] { placeAnew(); });
    QObject::connect(screen, &QScreen::logicalDotsPerInchChanged, &receiver, [this] { placeAnew(); });
}

/// The toolkit tells of one change in several signals, some of them before all is as it will be.
void Views::Parts::placeAnew() {
    screensTurn.once(0, [this] {
        icon.rescale();
        if (hud && !presenter.isOrderedIn.get()) hud.reset();
        if (hud) hud->rescale();
        icon.place();
        if (panel && !panel->isVisible()) panel.reset();
        if (panel) panel->placeAnew(icon.frame(), screenmap::current());
        if (presenter.isOrderedIn.get()) placeHUD();
    });
}

void Views::Parts::placeHUD() { hudWindow().place(icon.frame(), screenmap::current()); }

void Views::Parts::raise() {
    if (icon.isVisible()) icon.raise();
    if (hud && hud->isVisible()) hud->raise();
    if (icon.menu() != nullptr) icon.menu()->raise();
}

void Views::Parts::reshape() {
    icon.reshape();
    if (hud) hud->reshape();
    if (panel) panel->reshape();
}

Views::Views(const Environment& environment, Verbs verbs)
    : parts_(std::make_unique<Parts>(environment, std::move(verbs))) {}

Views::~Views() = default;

AppWindows Views::windows() { return {.icon = &parts_->iconOnScreen, .panel = &parts_->panelOnDemand}; }

bool Views::PanelOnDemand::place() {
    return parts_.panelWindow().place(parts_.icon.frame(), screenmap::current());
}

void Views::PanelOnDemand::show() { parts_.panelWindow().open(); }

void Views::PanelOnDemand::takeKeyboard() {
    if (parts_.panel) parts_.panel->takeKeyboard();
}

void Views::PanelOnDemand::clickedOutside() {
    if (parts_.panel) parts_.panel->clickedOutside();
}

void Views::PanelOnDemand::hide() {
    if (!parts_.panel) return;
    parts_.panel->dismiss();
    parts_.dropPanel.once(keepHiddenPanel, [this] { parts_.panel.reset(); });
}

}  // namespace dorix
