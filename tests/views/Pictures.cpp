#include "views/Pictures.h"

#include "views/Application.h"

#include <gtest/gtest.h>

#include <QDir>
#include <cstdlib>

namespace dorix::testing {

namespace {

const char* const pictures = DORIX_PICTURES;
const char* const drawn = DORIX_DRAWN_PICTURES;

/// Glyphs differ a little from one version of the font library to the next; a line that breaks elsewhere,
/// a colour or a shape differs in far more.
bool areAlike(const QImage& one, const QImage& other) {
    if (one.size() != other.size()) return false;
    int different = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            const int distance =
                std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
            if (distance > 60) ++different;
        }
    }
    return different < 120;
}

}  // namespace

QGuiApplication& offscreenApplication() {
    static int count = 1;
    static char name[] = "views_test";
    static char* arguments[] = {name, nullptr};
    static auto* const application = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        if (!qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) qputenv("QT_SCALE_FACTOR", "1");
        return makeApplication(count, arguments).release();
    }();
    return static_cast<QGuiApplication&>(*application);
}

void comparePicture(const QImage& image, const std::string& name) {
    const QString file = QString::fromStdString(name + ".png");
    if (qEnvironmentVariableIsSet("DORIX_UPDATE_PICTURES")) {
        ASSERT_TRUE(image.save(QDir(pictures).filePath(file)));
        return;
    }
    const QImage kept(QDir(pictures).filePath(file));
    if (areAlike(image, kept.convertToFormat(image.format()))) return;
    QDir().mkpath(drawn);
    image.save(QDir(drawn).filePath(file));
    ADD_FAILURE() << name << " looks different; what was drawn lies in " << drawn;
}

}  // namespace dorix::testing
