#include "views/ScreenMap.h"

#include <QGuiApplication>
#include <QScreen>
#include <cmath>
#include <functional>

namespace dorix::screenmap {

namespace {

/// The bottom left of the main screen, as the toolkit counts.
QPointF zero() {
    const QScreen* main = QGuiApplication::primaryScreen();
    if (main == nullptr) return {};
    const QRect frame = main->geometry();
    return {static_cast<double>(frame.x()), static_cast<double>(frame.y() + frame.height())};
}

/// Not every window manager tells the toolkit what its bars take.
QRect visibleGeometry(const QScreen& screen, WindowSystem& windowSystem) {
    const QRect all = screen.geometry();
    const double scale = screen.devicePixelRatio();
    const auto pixels = [scale](int points) { return qRound(points * scale); };
    const auto points = [scale](int count) { return qRound(count / scale); };
    // The toolkit scales a screen's size and leaves its corner where it is.
    const auto free = windowSystem.freeOfBars({all.x(), all.y(), pixels(all.width()), pixels(all.height())});
    const QRect left(all.x() + points(free.x - all.x()), all.y() + points(free.y - all.y()),
                     points(free.width), points(free.height));
    return screen.availableGeometry().intersected(left);
}

Screens screensWith(const std::function<QRect(const QScreen&)>& visible) {
    Screens screens;
    const QScreen* main = QGuiApplication::primaryScreen();
    for (const QScreen* screen : QGuiApplication::screens()) {
        const Screen found{.frame = fromQt(screen->geometry()), .visibleFrame = fromQt(visible(*screen))};
        screens.insert(screen == main ? screens.begin() : screens.end(), found);
    }
    // Between two screens, as when a laptop's lid closes, there may be none for a moment.
    if (screens.empty()) screens.push_back({.frame = {0, 0, 1280, 800}, .visibleFrame = {0, 0, 1280, 800}});
    return screens;
}

}  // namespace

Screens current() {
    return screensWith([](const QScreen& screen) { return screen.availableGeometry(); });
}

Screens clearOfBars(WindowSystem& windowSystem) {
    return screensWith([&](const QScreen& screen) { return visibleGeometry(screen, windowSystem); });
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
