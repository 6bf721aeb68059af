#include "views/Exhibit.h"

#include "localdata/Language.h"
#include "views/Tokens.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QQmlContext>
#include <utility>

namespace dorix::testing {

namespace {

void awaitFrame(OverlayPanel& window) {
    QObject receiver;
    bool drawn = false;
    QObject::connect(&window, &QQuickWindow::frameSwapped, &receiver, [&] { drawn = true; });
    window.update();
    while (!drawn) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// What it shows when what was set in motion has come to rest: two frames after each other are the same.
QImage settled(OverlayPanel& window) {
    QImage before;
    QImage now = window.grabWindow();
    while (now != before) {
        awaitFrame(window);
        before = std::exchange(now, window.grabWindow());
    }
    return now;
}

QImage grabOn(OverlayPanel& window, QColor ground) {
    window.setColor(ground);
    return settled(window).convertToFormat(QImage::Format_RGB32);
}

/// The window with its translucency, which a screen without a compositor does not give: it is what makes the
/// difference between black and white below.
QImage grab(OverlayPanel& window) {
    const QImage onBlack = grabOn(window, Qt::black);
    const QImage onWhite = grabOn(window, Qt::white);
    QImage image(onBlack.size(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(window.devicePixelRatio());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb black = onBlack.pixel(x, y);
            const int alpha = 255 - (qGreen(onWhite.pixel(x, y)) - qGreen(black));
            image.setPixel(x, y, qRgba(qRed(black), qGreen(black), qBlue(black), alpha));
        }
    }
    return image;
}

}  // namespace

Exhibit::Exhibit(const Style& style) : style_(style) {
    installLanguage(defaults, {});
    theme.map().insert({{"fadeIn", 0}, {"fadeBetween", 0}, {"fadeOut", 0}, {"motionBetween", 0}});
    theme.setDark(style.dark);
    theme.setComposited(style.composited);
    engine_.rootContext()->setContextProperty("theme", &theme.map());
}

Exhibit::~Exhibit() {
    windows.clear();
    uninstallLanguage();
}

void Exhibit::hang(std::unique_ptr<OverlayPanel> window, double radius, QPoint at,
                   const std::function<QRectF()>& shape) {
    window->orderFrontRegardless();
    settled(*window);
    windows.push_back({.window = std::move(window), .radius = radius, .at = at, .shape = shape()});
}

void Exhibit::hang(std::unique_ptr<OverlayPanel> window, double radius) {
    constexpr int reach = tokens::shadowReach;
    size = window->size();
    hang(std::move(window), radius, {},
         [&] { return QRectF({}, size).adjusted(reach, reach, -reach, -reach); });
}

/// Over a plain ground; cut to their shapes where nothing composites, as the display does it.
QImage Exhibit::picture() const {
    const qreal scale = windows.front().window->devicePixelRatio();
    QImage image(size * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(style_.dark ? QColor(0x3A, 0x44, 0x52) : QColor(0xC9, 0xD6, 0xE4));
    QPainter painter(&image);
    for (const Hung& hung : windows) {
        QPainterPath path;
        path.addRoundedRect(hung.shape, hung.radius, hung.radius);
        painter.save();
        painter.translate(hung.at);
        if (!style_.composited) painter.setClipPath(path);
        painter.drawImage(QPoint(0, 0), grab(*hung.window));
        painter.restore();
    }
    return image;
}

}  // namespace dorix::testing
