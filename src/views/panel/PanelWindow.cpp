#include "views/panel/PanelWindow.h"

#include "panel/PanelPlacement.h"
#include "views/ScreenMap.h"
#include "views/Tokens.h"
#include "views/overlay/MenuWindow.h"

#include <QQuickItem>
#include <utility>

namespace dorix {

namespace {

constexpr int reach = tokens::shadowReach;
constexpr QMargins shadow{reach, reach, reach, reach};
constexpr double restBeforeSaving = 0.5;  // seconds
constexpr double keyboardComes = 0.15;    // the same, from its opening

}  // namespace

PanelWindow::PanelWindow(const ViewContext& context, AppState& state, SettingsStore& settings,
                         HistoryPanel& panel)
    : FloatingWindow(context),
      state_(state),
      panel_(panel),
      scene_(state, settings, panel, view()),
      saveSize_(context.executor),
      opening_(context.executor) {
    wireScene();
    load("Panel", {{"verbs", QVariant::fromValue(&scene_)}});
    onCancel = [this] { perform(panel_, "close"); };
    focusRequests_ = state_.focusRequest.subscribe([this](const auto&) {
        if (isVisible()) focusWhereAsked();
    });
}

PanelWindow::~PanelWindow() { panel_.windowNumber = 0; }

void PanelWindow::wireScene() {
    connect(&scene_, &PanelScene::menuWanted, this,
            [this](QPointF at, VerbPlace menu) { popUp(panelMenu(panel_, menu), at); });
    connect(&scene_, &PanelScene::moveWanted, this, &PanelWindow::moveByUser);
    connect(&scene_, &PanelScene::resizeWanted, this, [this](Qt::Edges edges) { resizeFrom(edges); });
}

bool PanelWindow::place(const Rect& icon, const Screens& screens) {
    const auto placement = placePanel(icon, screens, savedPanelSize(context().defaults));
    const QRect frame = screenmap::toQt(placement.frame);
    const QSize least(static_cast<int>(panelmeasure::leastSize.width),
                      static_cast<int>(panelmeasure::leastSize.height));
    userResizes_ = false;
    setMinimumSize(least.boundedTo(frame.size()).grownBy(shadow));
    takeFrame(frame.marginsAdded(shadow));
    reshape();
    return placement.anchorRight;
}

void PanelWindow::iconMoved(const Rect& icon, const Screens& screens) {
    state_.panelAnchorRight.set(place(icon, screens));
}

void PanelWindow::screensChanged(const Rect& icon, const Screens& screens) {
    const Rect card = screenmap::fromQt(geometry().marginsRemoved(shadow));
    const Rect& visible = screenOf(screens, card).visibleFrame;
    const bool fits = visible.minX() <= card.minX() && card.maxX() <= visible.maxX() &&
                      visible.minY() <= card.minY() && card.maxY() <= visible.maxY();
    // In another scale it keeps its pixels, and so has another size in points.
    if (!fits || drawnScale() != devicePixelRatio()) iconMoved(icon, screens);
    rescale();
}

void PanelWindow::open() {
    view().insert({{"shown", true}, {"byKeyboard", false}});
    rememberFront();
    panel_.windowNumber = winId();
    orderFrontRegardless();
    takeKeyboard();
    // A window manager that has only just met the window may not have been able to.
    opening_.once(keyboardComes, [this] {
        if (isVisible() && state_.panelOpen.get() && !isActive()) takeKeyboard();
    });
    focusWhereAsked();
}

void PanelWindow::takeKeyboard() { context().windowSystem.bringToFront(winId()); }

void PanelWindow::focusWhereAsked() {
    const auto wanted = state_.focusRequest.get();
    const char* const target = !wanted                                      ? "list"
                               : *wanted == AppState::FocusTarget::composer ? "composer"
                                                                            : "search";
    QMetaObject::invokeMethod(rootObject(), "focusOn", Q_ARG(QVariant, QString::fromLatin1(target)));
    state_.focusRequest.set(std::nullopt);
}

void PanelWindow::fade() {
    if (menu_) menu_->close();
    view().insert("shown", false);
    FloatingWindow::fade();
}

void PanelWindow::reshape() {
    const QRectF shape = QRectF(QPointF(0, 0), size()).marginsRemoved(shadow);
    cutTo(shape, tokens::cardRadius);
    // The edges can be taken a little outside of them.
    constexpr int grip = tokens::space;
    takePointerIn(shape.adjusted(-grip, -grip, grip, grip), tokens::cardRadius);
}

bool PanelWindow::event(QEvent* event) {
    // About to draw, perhaps after the computer slept past midnight.
    if (event->type() == QEvent::UpdateRequest) panel_.list.refreshDays();
    noteKeyboard(*event);
    return FloatingWindow::event(event);
}

void PanelWindow::moveByUser() {
    movedByUser();
    startSystemMove();
}

void PanelWindow::resizeFrom(Qt::Edges edges) {
    movedByUser();
    userResizes_ = startSystemResize(edges);
}

void PanelWindow::resizeEvent(QResizeEvent* event) {
    panel_.layout.setWidth(width() - 2 * reach);
    FloatingWindow::resizeEvent(event);
    reshape();
    if (!userResizes_) return;
    saveSize_.once(restBeforeSaving, [this] {
        const QSize card = size().shrunkBy(shadow);
        savePanelSize(context().defaults,
                      {static_cast<double>(card.width()), static_cast<double>(card.height())});
    });
}

void PanelWindow::popUp(Menu items, QPointF at) {
    if (items.empty()) return;
    menu_ = std::make_unique<MenuWindow>(context(), std::move(items));
    menu_->onClosed = [this] { menu_.release()->deleteLater(); };
    menu_->popUp(mapToGlobal(at).toPoint());
}

}  // namespace dorix
