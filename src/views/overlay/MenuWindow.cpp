#include "views/overlay/MenuWindow.h"

#include "views/DesktopWords.h"
#include "views/Tokens.h"
#include "views/overlay/TextFit.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QScreen>
#include <algorithm>
#include <utility>

namespace dorix {

namespace {

constexpr int reach = tokens::shadowReach;
constexpr int rowHeight = 7 * tokens::space;
constexpr int separatorHeight = 2 * tokens::space + 1;
constexpr int sidePadding = 3 * tokens::space;
constexpr int leastWidth = 44 * tokens::space;
constexpr double slip = 3;  // points that the pointer moves in the click that opens the menu

QString shown(const ClosureMenuItem& item) { return dorix::shown(item.label); }

}  // namespace

MenuWindow::MenuWindow(const ViewContext& context, Menu items)
    : OverlayPanel(context, WindowSystem::Kind::menu, Focusable::yes), items_(std::move(items)) {
    layOut();
    view().insert({{"current", -1}, {"byKeyboard", false}});
    onCancel = [this] { close(); };
    load("Menu");
    connect(rootObject(), SIGNAL(activated(int)), this, SLOT(activate(int)));
}

void MenuWindow::layOut() {
    QVariantList rows;
    int top = tokens::space;
    int widest = leastWidth;
    const TextFit fit(tokens::fontBody);
    for (const ClosureMenuItem& item : items_) {
        const int height = item.isSeparator() ? separatorHeight : rowHeight;
        rows_.push_back({.top = top, .height = height});
        rows.append(QVariantMap{
            {"label", shown(item)}, {"separator", item.isSeparator()}, {"y", top}, {"height", height}});
        top += height;
        widest = std::max(widest, fit.width(shown(item)) + 2 * sidePadding);
    }
    view().insert("rows", rows);
    resize(widest + 2 * reach, top + tokens::space + 2 * reach);
}

void MenuWindow::popUp(QPoint where) {
    const QScreen* screen = QGuiApplication::screenAt(where);
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    const QRect area = screen->availableGeometry();
    const QSize visible(width() - 2 * reach, height() - 2 * reach);
    QPoint corner = where;
    if (corner.x() + visible.width() > area.right() + 1) corner.rx() -= visible.width();
    if (corner.y() + visible.height() > area.bottom() + 1) corner.ry() -= visible.height();
    corner.setX(std::max(area.left(), corner.x()));
    corner.setY(std::max(area.top(), corner.y()));
    setPosition(corner - QPoint(reach, reach));
    openedAt_ = QPointF(where);
    cutTo(QRectF(reach, reach, visible.width(), visible.height()), tokens::bubbleRadius);
    orderFrontRegardless();
    // Where another program holds one of them the menu does without.
    grab(true);
}

void MenuWindow::grab(bool on) {
    if (QGuiApplication::platformName() != "xcb") return;  // others cannot
    setMouseGrabEnabled(on);
    setKeyboardGrabEnabled(on);
}

void MenuWindow::close() {
    if (std::exchange(closed_, true)) return;
    grab(false);
    orderOut();
    onClosed();
}

bool MenuWindow::canChoose(int row) const {
    if (row < 0 || row >= static_cast<int>(items_.size())) return false;
    return !items_[static_cast<std::size_t>(row)].isSeparator();
}

void MenuWindow::activate(int row) {
    if (!canChoose(row)) return;
    const auto handler = items_[static_cast<std::size_t>(row)].handler;
    close();
    handler();
}

int MenuWindow::rowAt(QPointF position) const {
    const double x = position.x() - reach;
    const double y = position.y() - reach;
    if (x < 0 || x >= width() - 2 * reach) return -1;
    const auto found =
        std::ranges::find_if(rows_, [&](const Row& row) { return y >= row.top && y < row.top + row.height; });
    const int row = static_cast<int>(found - rows_.begin());
    return canChoose(row) ? row : -1;
}

void MenuWindow::setCurrent(int row, bool byKeyboard) {
    current_ = row;
    view().insert({{"current", row}, {"byKeyboard", byKeyboard}});
}

void MenuWindow::step(int direction) {
    const int count = static_cast<int>(items_.size());
    int row = current_ < 0 && direction < 0 ? count : current_;
    for (int i = 0; i < count; ++i) {
        row = (row + direction + count) % count;
        if (canChoose(row)) {
            setCurrent(row, true);
            return;
        }
    }
}

/// The next row that begins with what was typed.
void MenuWindow::choosePrefix(const QString& typed) {
    const int count = static_cast<int>(items_.size());
    if (typed.isEmpty() || !typed.front().isPrint()) return;
    for (int i = 1; i <= count; ++i) {
        const int row = (std::max(current_, 0) + i) % count;
        if (canChoose(row) &&
            shown(items_[static_cast<std::size_t>(row)]).startsWith(typed, Qt::CaseInsensitive)) {
            setCurrent(row, true);
            return;
        }
    }
}

void MenuWindow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Down:
        case Qt::Key_Tab:
            step(1);
            return;
        case Qt::Key_Up:
        case Qt::Key_Backtab:
            step(-1);
            return;
        case Qt::Key_Home:
            current_ = -1;
            step(1);
            return;
        case Qt::Key_End:
            current_ = -1;
            step(-1);
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            activate(current_);
            return;
        case Qt::Key_Escape:
            OverlayPanel::keyPressEvent(event);
            return;
        default:
            choosePrefix(event->text());
    }
}

void MenuWindow::mousePressEvent(QMouseEvent* event) {
    const QRect visible = QRect(QPoint(0, 0), size()).adjusted(reach, reach, -reach, -reach);
    if (!visible.contains(event->position().toPoint())) {
        close();
        return;
    }
    armed_ = true;
    setCurrent(rowAt(event->position()), false);
}

void MenuWindow::mouseMoveEvent(QMouseEvent* event) {
    if ((event->globalPosition() - openedAt_).manhattanLength() >= slip && event->buttons() != Qt::NoButton) {
        armed_ = true;
    }
    const int row = rowAt(event->position());
    if (row != current_) setCurrent(row, false);
}

void MenuWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (armed_) activate(rowAt(event->position()));
}

}  // namespace dorix
