#include "views/Pictures.h"

#include "views/Tokens.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QPainter>
#include <QRawFont>
#include <QtEndian>
#include <algorithm>
#include <cstdlib>
#include <limits>

namespace dorix::testing {

namespace {

const char* const pictures = DORIX_PICTURES;
const char* const drawn = DORIX_DRAWN_PICTURES;
const char* const madeWith = "Made with";

/// Where the pictures are to be drawn instead of being compared; null if they are not.
QString drawingFolder() { return qEnvironmentVariable("DORIX_DRAW_PICTURES"); }

bool differ(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b)) > 24;
}

QString fileName(const std::string& name, const QImage& image) {
    const qreal scale = image.devicePixelRatio();
    return QString::fromStdString(name) + (scale == 1 ? "" : QStringLiteral("-%1x").arg(scale)) + ".png";
}

QString fontVersion(const char* family) {
    const QByteArray head = QRawFont::fromFont(QFont(family)).fontTable("head");
    const double revision = head.size() < 8 ? 0 : qFromBigEndian<qint32>(head.data() + 4) / 65536.0;
    return QStringLiteral("%1 %2").arg(family).arg(revision, 0, 'f', 3);
}

/// Letters and glyphs as the toolkit draws them by itself, and what with.
QImage letters() {
    const qreal scale = qGuiApp->devicePixelRatio();
    QImage image(QSize(560, 120) * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::white);
    QPainter painter(&image);
    int y = 0;
    for (const int size : {tokens::fontSmall, tokens::fontBody, tokens::fontTitle, tokens::fontLarge}) {
        QFont font = QGuiApplication::font();
        font.setPixelSize(size);
        painter.setFont(font);
        painter.drawText(4, y += 28, "Mañana a las 10:45 «vuelve» a abrir; ¿dónde? Hamburgefonstiv Q&@%");
    }
    const QString toolkit = QString(qVersion()).section('.', 0, 1);
    image.setText(
        madeWith,
        QStringLiteral("Qt %1, %2, %3").arg(toolkit, fontVersion(textFont), fontVersion(glyphFont)));
    return image;
}

}  // namespace

Difference difference(const QImage& one, const QImage& other) {
    if (one.size() != other.size()) return {.pixels = std::numeric_limits<int>::max(), .at = {}};
    // The squares lie half over each other, so that every glyph is whole in one of them.
    const int step = static_cast<int>(tokens::glyph * one.devicePixelRatio());
    const int columns = one.width() / step + 2;
    std::vector<int> squares(static_cast<std::size_t>(columns * (one.height() / step + 2)));
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (!differ(one.pixel(x, y), other.pixel(x, y))) continue;
            const int square = y / step * columns + x / step;
            for (const int its : {square, square + 1, square + columns, square + columns + 1}) {
                ++squares[static_cast<std::size_t>(its)];
            }
        }
    }
    const auto worst = std::ranges::max_element(squares);
    const int index = static_cast<int>(worst - squares.begin());
    return {.pixels = *worst, .at = QPoint(index % columns - 1, index / columns - 1) * step};
}

std::string whyNotComparable() {
    const QImage here = letters();
    const QString file = fileName("letters", here);
    if (!drawingFolder().isNull() && here.save(QDir(drawingFolder()).filePath(file))) return "";
    const QImage kept(QDir(pictures).filePath(file));
    if (kept.text(madeWith) == here.text(madeWith) && !difference(here, kept).isSeen()) return "";
    return "letters look different here (" + here.text(madeWith).toStdString() +
           ") than where they were kept (" + kept.text(madeWith).toStdString() +
           "), by version or by how the system draws them";
}

void comparePicture(const QImage& image, const std::string& name, const Style& style) {
    const QString file = fileName(
        name + "-" + style.language + (style.dark ? "-dark" : "-light") + (style.composited ? "" : "-solid"),
        image);
    if (!drawingFolder().isNull()) {
        ASSERT_TRUE(image.save(QDir(drawingFolder()).filePath(file)));
        return;
    }
    const auto found = difference(image, QImage(QDir(pictures).filePath(file)));
    if (!found.isSeen()) return;
    QDir().mkpath(drawn);
    image.save(QDir(drawn).filePath(file));
    ADD_FAILURE() << file.toStdString() << " looks different near " << found.at.x() << ", " << found.at.y()
                  << "; what was drawn lies in " << drawn;
}

}  // namespace dorix::testing
