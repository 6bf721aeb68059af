#include "views/ScreenMap.h"

#include <QGuiApplication>
#include <QScreen>
#include <cmath>

namespace dorix::screenmap {

namespace {

/// The bottom left of the main screen, as the toolkit counts.
QPointF zero() {
    const QScreen* main = QGuiApplication::primaryScreen();
    if (main == nullptr) return {};
    const QRect frame = main->geometry();
    return {static_cast<double>(frame.x()), static_cast<double>(frame.y() + frame.height())};
}

}  // namespace

Screens current() {
    Screens screens;
    const QScreen* main = QGuiApplication::primaryScreen();
    for (const QScreen* screen : QGuiApplication::screens()) {
        const Screen found{.frame = fromQt(screen->geometry()),
                           .visibleFrame = fromQt(screen->availableGeometry())};
        screens.insert(screen == main ? screens.begin() : screens.end(), found);
    }
    // Between two screens, as when a laptop's lid closes, there may be none for a moment.
    if (screens.empty()) screens.push_back({.frame = {0, 0, 1280, 800}, .visibleFrame = {0, 0, 1280, 800}});
    return screens;
}

Point fromQt(QPointF point) { return {point.x() - zero().x(), zero().y() - point.y()}; }

Rect fromQt(const QRect& rect) {
    const Point topLeft = fromQt(QPointF(rect.topLeft()));
    return {topLeft.x, topLeft.y - rect.height(), static_cast<double>(rect.width()),
            static_cast<double>(rect.height())};
}

QRect toQt(const Rect& rect) {
    const auto whole = [](double value) { return static_cast<int>(std::lround(value)); };
    return {whole(rect.x + zero().x()), whole(zero().y() - rect.maxY()), whole(rect.width),
            whole(rect.height)};
}

}  // namespace dorix::screenmap
