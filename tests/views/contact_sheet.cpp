// Draws a sheet of what the program looks like, at the scale of QT_SCALE_FACTOR: contact_sheet light|dark
// FILE has every state of the icon and the HUD in both languages, contact_sheet es|en FILE the panel.

#include "views/Application.h"
#include "views/Exhibit.h"

#include <QPainter>
#include <algorithm>
#include <cstdio>
#include <set>
#include <string>

namespace {

using namespace dorix::testing;

constexpr int captionHeight = 18;
const std::set<std::string> shownOfPanel{"panel-dictation", "panel-answer", "panel-empty-section"};

/// Two pictures of one height, side by side.
struct Row {
    std::string caption;
    QImage left;
    QImage right;
};

QImage sheet(const std::vector<Row>& rows, QColor ground) {
    const qreal scale = rows.front().left.devicePixelRatio();
    double width = 0;
    double height = 0;
    for (const Row& row : rows) {
        width = std::max(width, row.left.width() / scale);
        height += captionHeight + row.left.height() / scale;
    }
    QImage all((QSizeF(2 * width, height) * scale).toSize(), QImage::Format_RGB32);
    all.setDevicePixelRatio(scale);
    all.fill(ground);
    QPainter painter(&all);
    painter.setPen(Qt::gray);
    double y = 0;
    for (const Row& row : rows) {
        painter.drawText(QPointF(6, y + captionHeight - 5), QString::fromStdString(row.caption));
        painter.drawImage(QPointF(0, y + captionHeight), row.left);
        painter.drawImage(QPointF(width, y + captionHeight), row.right);
        y += captionHeight + row.left.height() / scale;
    }
    return all;
}

QImage iconSheet(bool dark) {
    std::vector<Row> rows;
    for (const Picture& picture : iconPictures()) {
        rows.push_back({.caption = picture.name,
                        .left = picture.show({.language = "es", .dark = dark})->picture(),
                        .right = picture.show({.language = "en", .dark = dark})->picture()});
    }
    return sheet(rows, dark ? Qt::black : Qt::white);
}

QImage panelSheet(const std::string& language) {
    std::vector<Row> rows;
    for (const Picture& picture : panelPictures()) {
        if (!shownOfPanel.contains(picture.name)) continue;
        rows.push_back({.caption = picture.name,
                        .left = picture.show({.language = language})->picture(),
                        .right = picture.show({.language = language, .dark = true})->picture()});
    }
    return sheet(rows, Qt::white);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: contact_sheet light|dark|es|en FILE\n");
        return 2;
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const auto application = dorix::makeApplication(argc, argv);
    const std::string what = argv[1];
    const QImage drawn = what == "es" || what == "en" ? panelSheet(what) : iconSheet(what == "dark");
    return drawn.save(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
}
