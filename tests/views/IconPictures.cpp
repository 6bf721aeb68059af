#include "dictation/AppState.h"
#include "localdata/Language.h"
#include "overlay/Icon.h"
#include "overlay/Placement.h"
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

void hangHUD(Exhibit& exhibit, const Scene& scene, QPoint iconAt) {
    const Rect screen{0, 0, 1280, 800};
    const double x = scene.atLeftEdge ? 0 : screen.width - iconmeasure::window;
    const Rect icon{x, 300, iconmeasure::window, iconmeasure::window};
    auto hud = std::make_unique<HUDWindow>(exhibit.context);
    hud->place(icon, {{.frame = screen, .visibleFrame = screen}});
    hud->setContent(hudContent(exhibit.bench.state, ""));  // while words come the bubble only grows
    hud->setContent(hudContent(exhibit.bench.state, scene.partial));
    hud->setLevel(level);
    hud->setShown(true);
    const auto* bubble = hud->rootObject()->property("bubble").value<QQuickItem*>();
    const QPoint at = iconAt + hud->geometry().topLeft() - screenmap::toQt(icon).topLeft();
    exhibit.hang(std::move(hud), tokens::bubbleRadius, at,
                 [&] { return QRectF(bubble->x(), bubble->y(), bubble->width(), bubble->height()); });
}

/// The icon with the HUD beside it.
std::unique_ptr<Exhibit> iconExhibit(const Scene& scene, const Style& style) {
    auto exhibit = std::make_unique<Exhibit>(style);
    AppState& state = exhibit->bench.state;
    scene.set(state);
    const auto look = iconLook(state.hud.get().kind, scene.paused);
    // An arc that turns would be drawn wherever it is by then.
    if (look == IconLook::processing) exhibit->theme.map().insert("reducesMotion", true);
    auto icon = std::make_unique<FloatingIconWindow>(exhibit->context);
    icon->setLook(look);
    icon->setLevel(level);
    exhibit->size = sceneSize;
    const QPoint at(scene.atLeftEdge ? 0 : sceneSize.width() - icon->width(),
                    (sceneSize.height() - icon->height()) / 2);
    constexpr double disc = iconmeasure::glyph;
    exhibit->hang(std::move(icon), disc / 2, at,
                  [] { return QRectF(iconmeasure::margin, iconmeasure::margin, disc, disc); });
    if (hudContent(state, "").look != HUDContent::Look::hidden) hangHUD(*exhibit, scene, at);
    return exhibit;
}

std::unique_ptr<Exhibit> menuExhibit(const Style& style) {
    auto exhibit = std::make_unique<Exhibit>(style);
    const auto row = [](const char* label) { return ClosureMenuItem{tr(label), [] {}}; };
    auto menu = std::make_unique<MenuWindow>(
        exhibit->context, Menu{row("Abrir historial"), ClosureMenuItem::separator(), row("Pausar DORIX"),
                               ClosureMenuItem::separator(), row("Reiniciar DORIX"), row("Salir de DORIX")});
    menu->popUp({100, 100});
    for (int step = 0; step < 2; ++step) {
        QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QCoreApplication::sendEvent(menu.get(), &down);
    }
    exhibit->hang(std::move(menu), tokens::bubbleRadius);
    return exhibit;
}

std::unique_ptr<Exhibit> tooltipExhibit(const Style& style) {
    auto exhibit = std::make_unique<Exhibit>(style);
    auto text = QString::fromStdString(desktopWords(iconTooltip({}, {}, false)));
    auto tooltip = std::make_unique<TooltipWindow>(exhibit->context, std::move(text));
    tooltip->showBeside(iconFrame({.x = 1000, .y = 300}));
    exhibit->hang(std::move(tooltip), tokens::bubbleRadius);
    return exhibit;
}

}  // namespace

std::vector<Picture> iconPictures() {
    std::vector<Picture> pictures{
        {.name = "menu", .show = menuExhibit, .styles = {{}, englishDark}},
        {.name = "tooltip", .show = tooltipExhibit, .styles = {{}}},
    };
    for (const Scene& scene : scenes()) {
        pictures.push_back({.name = scene.name,
                            .show = [scene](const Style& style) { return iconExhibit(scene, style); },
                            .styles = scene.styles});
    }
    return pictures;
}

}  // namespace dorix::testing
