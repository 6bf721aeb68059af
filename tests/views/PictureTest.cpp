#include "views/Application.h"
#include "views/Gallery.h"
#include "views/TextFit.h"
#include "views/Tokens.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QGuiApplication>
#include <cmath>
#include <cstdlib>

namespace dorix::testing {
namespace {

/// Run with DORIX_UPDATE_PICTURES set, the tests keep what they draw instead of comparing it.
const char* const pictures = DORIX_PICTURES;
const char* const drawn = DORIX_DRAWN_PICTURES;

QGuiApplication& offscreenApplication() {
    static int count = 1;
    static char name[] = "views_test";
    static char* arguments[] = {name, nullptr};
    static auto* const application = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_SCALE_FACTOR", "1");
        return makeApplication(count, arguments).release();
    }();
    return static_cast<QGuiApplication&>(*application);
}

class PictureTest : public ::testing::Test {
 protected:
    PictureTest() { offscreenApplication(); }

    /// Glyphs differ a little from one version of the font library to the next; a line that breaks elsewhere,
    /// a colour or a shape differs in far more.
    static bool areAlike(const QImage& one, const QImage& other) {
        if (one.size() != other.size()) return false;
        int different = 0;
        for (int y = 0; y < one.height(); ++y) {
            for (int x = 0; x < one.width(); ++x) {
                const QRgb a = one.pixel(x, y);
                const QRgb b = other.pixel(x, y);
                const int distance = std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) +
                                     std::abs(qBlue(a) - qBlue(b));
                if (distance > 60) ++different;
            }
        }
        return different < 120;
    }

    static void compare(const QImage& image, const std::string& name) {
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
};

TEST_F(PictureTest, EveryStateLooksAsItDid) {
    Gallery gallery;
    for (const auto& scene : scenes()) {
        for (const char* language : {"es", "en"}) {
            for (const bool dark : {false, true}) {
                const auto name = scene.name + "-" + language + (dark ? "-dark" : "-light");
                compare(gallery.picture(scene, {.language = language, .dark = dark}), name);
            }
        }
    }
    compare(gallery.tooltipPicture({}), "tooltip-es-light");
    compare(gallery.menuPicture({}), "menu-es-light");
    compare(gallery.menuPicture({.language = "en", .dark = true}), "menu-en-dark");
}

TEST_F(PictureTest, WithoutACompositorNoPixelIsHalfTransparent) {
    Gallery gallery;
    const auto all = scenes();
    const auto done = std::ranges::find(all, "done", &Scene::name);
    for (const bool dark : {false, true}) {
        compare(gallery.picture(*done, {.dark = dark, .composited = false}),
                dark ? "solid-dark" : "solid-light");
    }
}

TEST_F(PictureTest, LinesOfAMessageAreOfLikeLength) {
    const TextFit fit(tokens::fontBody);
    const QString text =
        "Para preguntar sobre la pantalla, activa «Grabación de pantalla» para DORIX y vuelve.";
    const int width = fit.balancedWidth(text, 392);
    EXPECT_LT(width, 350);
    EXPECT_EQ(fit.lines(text, width), fit.lines(text, 392));
    EXPECT_EQ(fit.balancedWidth("corto", 392), fit.width("corto"));
    EXPECT_LE(fit.balancedWidth(QString(2000, 'x'), 392), 392);
}

double luminance(Argb color) {
    const auto part = [&](int shift) {
        const double value = ((color >> shift) & 0xFFU) / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(16) + 0.7152 * part(8) + 0.0722 * part(0);
}

double contrast(Argb one, Argb other) {
    const auto [low, high] = std::minmax({luminance(one), luminance(other)});
    return (high + 0.05) / (low + 0.05);
}

TEST(TokensTest, TextAndGlyphsStandOutFromTheirSurface) {
    for (const bool dark : {false, true}) {
        const Palette& palette = tokens::palette(dark);
        SCOPED_TRACE(dark ? "dark" : "light");
        for (const Argb surface : {palette.surface, palette.surfaceRaised}) {
            EXPECT_GE(contrast(palette.text, surface), 4.5);
            EXPECT_GE(contrast(palette.textSecondary, surface), 4.5);
            for (const Argb glyph : {palette.accent, palette.success, palette.error, palette.learned}) {
                EXPECT_GE(contrast(glyph, surface), 3);
            }
        }
    }
}

}  // namespace
}  // namespace dorix::testing
