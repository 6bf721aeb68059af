#include "views/Gallery.h"

#include "fakes/FakePlatform.h"
#include "localdata/Language.h"
#include "overlay/IconPlacement.h"
#include "shell/AppController.h"
#include "views/DesktopWords.h"
#include "views/ScreenMap.h"
#include "views/Tokens.h"
#include "views/overlay/TooltipWindow.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QQmlContext>
#include <QQuickItem>

namespace dorix::testing {

namespace {

constexpr QSize sceneSize(584, 140);
constexpr double level = 0.6;

std::function<void(AppState&)> phase(std::function<HUDPhase()> make) {
    return [make = std::move(make)](AppState& state) { state.hud.set(make()); };
}

std::function<void(AppState&)> listening(bool asking, bool handsFree) {
    return [=](AppState& state) {
        state.asking.set(asking);
        state.handsFree.set(handsFree);
        state.hud.set(HUDPhase::listening());
    };
}

std::string writtenIn(const char* format) { return formatText(tr(format), {"Notas"}); }

const char* const longPartial =
    "bueno, lo que quería decirte es que la reunión del lunes se pasa al martes a las diez, que Ana no puede "
    "antes, y que si te parece bien mandamos las cifras nuevas a todos el mismo lunes por la tarde";

void settle() {
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

/// Cut to its shape where nothing composites, as the display does it.
void draw(QPainter& painter, const Style& style, QPoint at, const QImage& image, const QRectF& shape,
          double radius) {
    painter.save();
    painter.translate(at);
    if (!style.composited) {
        QPainterPath path;
        path.addRoundedRect(shape, radius, radius);
        painter.setClipPath(path);
    }
    painter.drawImage(QPoint(0, 0), image);
    painter.restore();
}

QImage grabOn(QQuickView& view, QColor ground) {
    view.setColor(ground);
    settle();
    return view.grabWindow().convertToFormat(QImage::Format_RGB32);
}

/// The window with its translucency, which a screen without a compositor does not give: it is what makes the
/// difference between black and white below.
QImage grab(QQuickView& view) {
    const QImage onBlack = grabOn(view, Qt::black);
    const QImage onWhite = grabOn(view, Qt::white);
    view.setColor(Qt::transparent);
    QImage image(onBlack.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb black = onBlack.pixel(x, y);
            const int alpha = 255 - (qGreen(onWhite.pixel(x, y)) - qGreen(black));
            image.setPixel(x, y, qRgba(qRed(black), qGreen(black), qBlue(black), alpha));
        }
    }
    image.setDevicePixelRatio(view.devicePixelRatio());
    return image;
}

}  // namespace

std::vector<Scene> scenes() {
    using Phase = HUDPhase;
    return {
        {.name = "idle"},
        {.name = "paused", .paused = true},
        {.name = "hint", .set = [](AppState& state) { state.showFirstRunHint.set(true); }},
        {.name = "listening", .set = listening(false, false)},
        {.name = "listening-short", .set = listening(false, false), .partial = "hola Ana"},
        {.name = "listening-long", .set = listening(false, false), .partial = longPartial},
        {.name = "listening-left",
         .set = listening(false, false),
         .partial = longPartial,
         .atLeftEdge = true},
        {.name = "asking", .set = listening(true, false)},
        {.name = "asking-hands-free", .set = listening(true, true), .partial = "qué dice el tercer párrafo"},
        {.name = "processing", .set = phase([] { return Phase::processing(); })},
        {.name = "done", .set = phase([] { return Phase::done(writtenIn("Escrito en %@")); })},
        {.name = "done-clipboard",
         .set =
             phase([] { return Phase::done(writtenIn("Escrito en %@ · también en el portapapeles (⌘V)")); })},
        {.name = "info", .set = phase([] {
                             return Phase::info(
                                 tr("No te he oído. Mantén pulsado ⌥ Espacio mientras hablas."));
                         })},
        {.name = "error", .set = phase([] {
                              return Phase::error(
                                  tr("DORIX necesita acceso al micrófono. Ábrelo desde Ajustes."));
                          })},
        {.name = "error-long",
         .set = phase([] {
             return Phase::error(
                 tr("Para preguntar sobre la pantalla, activa «Grabación de pantalla» para DORIX y "
                    "vuelve a abrir la app."));
         })},
        {.name = "learned", .set = phase([] { return Phase::learned(tr("Aprendido") + ": Velmar"); })},
    };
}

Gallery::Gallery() {
    installLanguage(defaults_, {});
    engine_.rootContext()->setContextProperty("theme", &theme_.map());
    icon_ = std::make_unique<FloatingIconWindow>(context_, executor_, defaults_);
    hud_ = std::make_unique<HUDWindow>(context_);
}

Gallery::~Gallery() { uninstallLanguage(); }

void Gallery::apply(const Style& style) {
    defaults_.set("appLanguage", style.language);
    // First of all, for the rest sets things in motion.
    theme_.setReducesMotion(false);
    theme_.map().insert({{"fadeIn", 0}, {"fadeBetween", 0}, {"fadeOut", 0}, {"motionBetween", 0}});
    theme_.setDark(style.dark);
    theme_.setComposited(style.composited);
}

QImage Gallery::ground(const Style& style, QSize points) const {
    const qreal scale = icon_->devicePixelRatio();
    QImage image(points * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(style.dark ? QColor(0x3A, 0x44, 0x52) : QColor(0xC9, 0xD6, 0xE4));
    return image;
}

QImage Gallery::picture(const Scene& scene, const Style& style) {
    apply(style);
    AppState state;
    scene.set(state);
    const HUDContent content = hudContent(state, scene.partial);
    const auto look = iconLook(state.hud.get().kind, scene.paused);
    const bool turns = look == IconLook::processing;
    theme_.map().insert("reducesMotion", turns);

    const Rect screen{0, 0, 1280, 800};
    const double x = scene.atLeftEdge ? 0 : screen.width - iconmeasure::window;
    const Rect place{x, 300, iconmeasure::window, iconmeasure::window};
    saveIconOrigin(defaults_, {place.x, place.y});
    icon_->setLook(look);
    icon_->setLevel(level);
    icon_->orderFrontRegardless();
    hud_->place(place, {{.frame = screen, .visibleFrame = screen}});
    hud_->setContent(content);
    hud_->setLevel(level);
    hud_->setShown(content.look != HUDContent::Look::hidden);
    hud_->orderFrontRegardless();
    settle();

    QImage image = ground(style, sceneSize);
    QPainter painter(&image);
    const int iconLeft = scene.atLeftEdge ? 0 : sceneSize.width() - static_cast<int>(iconmeasure::window);
    const QRect hudFrame = hud_->geometry();
    const QRect iconFrame = screenmap::toQt(place);
    const QPoint iconAt(iconLeft, (sceneSize.height() - static_cast<int>(iconmeasure::window)) / 2);
    const QRectF disc(iconmeasure::margin, iconmeasure::margin, iconmeasure::glyph, iconmeasure::glyph);
    draw(painter, style, iconAt, grab(*icon_), disc, iconmeasure::glyph / 2);
    if (content.look != HUDContent::Look::hidden) {
        const auto* bubble = hud_->rootObject()->property("bubble").value<QQuickItem*>();
        const QRectF shape(bubble->x(), bubble->y(), bubble->width(), bubble->height());
        draw(painter, style, iconAt + hudFrame.topLeft() - iconFrame.topLeft(), grab(*hud_), shape,
             tokens::bubbleRadius);
    }
    return image;
}

QImage Gallery::menuPicture(const Style& style) {
    apply(style);
    FakePlatform desktop;
    AppController controller(desktop.platform());
    MenuWindow menu(context_, controller.iconMenu());
    menu.popUp({100, 100});
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
    QCoreApplication::sendEvent(&menu, &down);
    QCoreApplication::sendEvent(&menu, &down);
    const QImage image = alone(menu, style);
    menu.close();
    return image;
}

QImage Gallery::tooltipPicture(const Style& style) {
    apply(style);
    TooltipWindow tooltip(context_, QString::fromStdString(desktopWords(iconTooltip({}))));
    tooltip.showBeside(iconFrame({.x = 1000, .y = 300}));
    return alone(tooltip, style);
}

QImage Gallery::alone(QQuickView& window, const Style& style) const {
    settle();
    QImage image = ground(style, window.size());
    QPainter(&image).drawImage(QPoint(0, 0), grab(window));
    return image;
}

}  // namespace dorix::testing
