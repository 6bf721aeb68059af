#include "dictation/AppState.h"
#include "localdata/Language.h"
#include "overlay/IconLook.h"
#include "overlay/IconPlacement.h"
#include "views/DesktopWords.h"
#include "views/Exhibit.h"
#include "views/ScreenMap.h"
#include "views/Tokens.h"
#include "views/overlay/FloatingIconWindow.h"
#include "views/overlay/HUDWindow.h"
#include "views/overlay/MenuWindow.h"
#include "views/overlay/TooltipWindow.h"

#include <QQuickItem>

namespace dorix::testing {

namespace {

constexpr int iconWidth = static_cast<int>(iconmeasure::window);
constexpr QSize sceneSize(584, 140);
constexpr double level = 0.6;
const Style englishDark{.language = "en", .dark = true};

/// A state of the program that the icon and the HUD have a look for.
struct Scene {
    std::string name;
    std::function<void(AppState&)> set = [](AppState&) {};
    std::string partial;
    bool paused = false;
    bool atLeftEdge = false;
    std::vector<Style> styles{{}, englishDark};
};

std::function<void(AppState&)> message(HUDPhase (*kind)(std::string), const char* text) {
    return [=](AppState& state) { state.hud.set(kind(formatText(tr(text), {"Notas", "informal"}))); };
}

void listen(AppState& state) { state.hud.set(HUDPhase::listening()); }

void askHandsFree(AppState& state) {
    state.asking.set(true);
    state.handsFree.set(true);
    listen(state);
}

const char* const longPartial =
    "bueno, lo que quería decirte es que la reunión del lunes se pasa al martes a las diez, que Ana no puede "
    "antes, y que si te parece bien mandamos las cifras nuevas a todos el mismo lunes por la tarde";

std::vector<Scene> scenes() {
    return {
        {.name = "idle"},
        {.name = "paused", .paused = true, .styles = {{}}},
        {.name = "hint", .set = [](AppState& state) { state.showFirstRunHint.set(true); }},
        {.name = "listening", .set = listen},
        {.name = "listening-short", .set = listen, .partial = "hola Ana", .styles = {{}}},
        {.name = "listening-long", .set = listen, .partial = longPartial, .styles = {{}}},
        {.name = "listening-left",
         .set = listen,
         .partial = longPartial,
         .atLeftEdge = true,
         .styles = {englishDark}},
        {.name = "asking", .set = askHandsFree, .partial = "qué dice el tercer párrafo"},
        {.name = "processing", .set = [](AppState& state) { state.hud.set(HUDPhase::processing()); }},
        {.name = "done",
         .set = message(HUDPhase::done, "Escrito en %@ · también en el portapapeles (⌘V)"),
         .styles = {{}, englishDark, {.composited = false}, {.dark = true, .composited = false}}},
        {.name = "info",
         .set = message(HUDPhase::info, "No te he oído. Mantén pulsado ⌥ Espacio mientras hablas.")},
        {.name = "error",
         .set = message(HUDPhase::error, "DORIX necesita acceso al micrófono. Ábrelo desde Ajustes.")},
        {.name = "error-long",
         .set = message(HUDPhase::error,
                        "Para preguntar sobre la pantalla, activa «Grabación de pantalla» para DORIX y "
                        "vuelve a abrir la app.")},
        {.name = "learned", .set = message(HUDPhase::learned, "✓ Aprendido: en %@ escribes %@.")},
    };
}

/// The icon with the HUD beside it.
class IconExhibit final : public Exhibit {
 public:
    IconExhibit(const Scene& scene, const Style& style) : Exhibit(style) {
        size = sceneSize;
        AppState state;
        scene.set(state);
        const auto look = iconLook(state.hud.get().kind, scene.paused);
        // An arc that turns would be drawn wherever it is by then.
        if (look == IconLook::processing) theme.map().insert("reducesMotion", true);
        icon_.setLook(look);
        icon_.setLevel(level);
        show(icon_);
        const int left = scene.atLeftEdge ? 0 : sceneSize.width() - iconWidth;
        const QPoint at(left, (sceneSize.height() - iconWidth) / 2);
        const QRectF disc(iconmeasure::margin, iconmeasure::margin, iconmeasure::glyph, iconmeasure::glyph);
        hang({.window = icon_, .at = at, .shape = disc, .radius = iconmeasure::glyph / 2});
        if (hudContent(state, "").look != HUDContent::Look::hidden) showHUD(scene, state, at);
    }

 private:
    void showHUD(const Scene& scene, const AppState& state, QPoint iconAt) {
        const Rect screen{0, 0, 1280, 800};
        const double x = scene.atLeftEdge ? 0 : screen.width - iconmeasure::window;
        const Rect icon{x, 300, iconmeasure::window, iconmeasure::window};
        hud_.place(icon, {{.frame = screen, .visibleFrame = screen}});
        hud_.setContent(hudContent(state, ""));  // while words come the bubble only grows
        hud_.setContent(hudContent(state, scene.partial));
        hud_.setLevel(level);
        hud_.setShown(true);
        show(hud_);
        const auto* bubble = hud_.rootObject()->property("bubble").value<QQuickItem*>();
        hang({.window = hud_,
              .at = iconAt + hud_.geometry().topLeft() - screenmap::toQt(icon).topLeft(),
              .shape = {bubble->x(), bubble->y(), bubble->width(), bubble->height()},
              .radius = tokens::bubbleRadius});
    }

    FloatingIconWindow icon_{context, executor, defaults};
    HUDWindow hud_{context};
};

std::unique_ptr<OverlayPanel> makeMenu(const ViewContext& context) {
    const auto row = [](const char* label) { return ClosureMenuItem{tr(label), [] {}}; };
    auto menu = std::make_unique<MenuWindow>(
        context, Menu{row("Abrir historial"), ClosureMenuItem::separator(), row("Pausar DORIX"),
                      ClosureMenuItem::separator(), row("Reiniciar DORIX"), row("Salir de DORIX")});
    menu->popUp({100, 100});
    for (int step = 0; step < 2; ++step) {
        QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QCoreApplication::sendEvent(menu.get(), &down);
    }
    return menu;
}

std::unique_ptr<OverlayPanel> makeTooltip(const ViewContext& context) {
    auto text = QString::fromStdString(desktopWords(iconTooltip({})));
    auto tooltip = std::make_unique<TooltipWindow>(context, std::move(text));
    tooltip->showBeside(iconFrame({.x = 1000, .y = 300}));
    return tooltip;
}

/// A window by itself.
class SingleExhibit final : public Exhibit {
 public:
    SingleExhibit(std::unique_ptr<OverlayPanel> (*make)(const ViewContext&), const Style& style)
        : Exhibit(style), window_(make(context)) {
        show(*window_);
        size = window_->size();
        constexpr int reach = tokens::shadowReach;
        hang({.window = *window_,
              .at = {},
              .shape = QRectF({}, size).adjusted(reach, reach, -reach, -reach),
              .radius = tokens::bubbleRadius});
    }

 private:
    std::unique_ptr<OverlayPanel> window_;
};

/// A picture of an exhibit that is made of `source` and the style.
template <typename Exhibit, typename Source>
Picture picture(std::string name, Source source, std::vector<Style> styles) {
    return {std::move(name), [=](const Style& style) { return std::make_unique<Exhibit>(source, style); },
            std::move(styles)};
}

}  // namespace

std::vector<Picture> iconPictures() {
    std::vector<Picture> pictures;
    for (const Scene& scene : scenes()) {
        pictures.push_back(picture<IconExhibit>(scene.name, scene, scene.styles));
    }
    pictures.push_back(picture<SingleExhibit>("tooltip", makeTooltip, {{}}));
    pictures.push_back(picture<SingleExhibit>("menu", makeMenu, {{}, englishDark}));
    return pictures;
}

}  // namespace dorix::testing
