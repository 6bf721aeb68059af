// Draws every state of the icon and the HUD in both languages into one picture: contact_sheet light|dark
// FILE; or the panel in one language: contact_sheet es|en FILE. The scale is QT_SCALE_FACTOR's.

#include "views/Application.h"
#include "views/Gallery.h"
#include "views/PanelGallery.h"

#include <QFont>
#include <QPainter>
#include <cstdio>
#include <string>

namespace {

using namespace dorix;
using namespace dorix::testing;

constexpr int captionHeight = 18;

QImage column(Gallery& gallery, const Style& style) {
    std::vector<std::pair<QString, QImage>> pictures;
    for (const auto& scene : scenes()) {
        pictures.emplace_back(QString::fromStdString(scene.name), gallery.picture(scene, style));
    }
    Style solid = style;
    solid.composited = false;
    pictures.emplace_back("done, nothing composites", gallery.picture(scenes()[10], solid));
    pictures.emplace_back("tooltip", gallery.tooltipPicture(style));
    pictures.emplace_back("menu", gallery.menuPicture(style));

    const qreal scale = pictures.front().second.devicePixelRatio();
    const int width = pictures.front().second.width();
    int height = 0;
    for (const auto& [name, image] : pictures)
        height += image.height() + static_cast<int>(captionHeight * scale);
    QImage all(width, height, QImage::Format_RGB32);
    all.setDevicePixelRatio(scale);
    all.fill(style.dark ? Qt::black : Qt::white);
    QPainter painter(&all);
    painter.setPen(Qt::gray);
    double y = 0;
    for (const auto& [name, image] : pictures) {
        painter.drawText(QPointF(6, y + captionHeight - 5), name);
        painter.drawImage(QPointF(0, y + captionHeight), image);
        y += captionHeight + image.height() / scale;
    }
    return all;
}

QImage iconSheet(bool dark) {
    Gallery gallery;
    const QImage spanish = column(gallery, {.language = "es", .dark = dark});
    const QImage english = column(gallery, {.language = "en", .dark = dark});
    QImage sheet(spanish.width() + english.width(), spanish.height(), QImage::Format_RGB32);
    QPainter painter(&sheet);
    painter.drawImage(QRect(QPoint(0, 0), spanish.size()), spanish);
    painter.drawImage(QRect(QPoint(spanish.width(), 0), english.size()), english);
    return sheet;
}

QImage panelPage(const std::string& language) {
    std::vector<QImage> pictures;
    for (const auto& picture : panelSheet(language)) pictures.push_back(drawPanel(picture));
    const QSize size = pictures.front().size();
    QImage sheet(size * 2, QImage::Format_RGB32);
    QPainter painter(&sheet);
    for (int i = 0; i < 4; ++i) {
        const QPoint at(i % 2 * size.width(), i / 2 * size.height());
        painter.drawImage(QRect(at, size), pictures[static_cast<std::size_t>(i)]);
    }
    return sheet;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: contact_sheet light|dark|es|en FILE\n");
        return 2;
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const auto application = makeApplication(argc, argv);
    const std::string what = argv[1];
    const QImage sheet = what == "es" || what == "en" ? panelPage(what) : iconSheet(what == "dark");
    return sheet.save(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
}
