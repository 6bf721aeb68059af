#include "views/Gallery.h"
#include "views/Pictures.h"
#include "views/Tokens.h"
#include "views/overlay/TextFit.h"

#include <gtest/gtest.h>

#include <cmath>

namespace dorix::testing {
namespace {

class PictureTest : public ::testing::Test {
 protected:
    PictureTest() { offscreenApplication(); }
};

TEST_F(PictureTest, EveryStateLooksAsItDid) {
    Gallery gallery;
    for (const auto& scene : scenes()) {
        for (const char* language : {"es", "en"}) {
            for (const bool dark : {false, true}) {
                const auto name = scene.name + "-" + language + (dark ? "-dark" : "-light");
                comparePicture(gallery.picture(scene, {.language = language, .dark = dark}), name);
            }
        }
    }
    comparePicture(gallery.tooltipPicture({}), "tooltip-es-light");
    comparePicture(gallery.menuPicture({}), "menu-es-light");
    comparePicture(gallery.menuPicture({.language = "en", .dark = true}), "menu-en-dark");
}

TEST_F(PictureTest, WithoutACompositorNoPixelIsHalfTransparent) {
    Gallery gallery;
    const auto all = scenes();
    const auto done = std::ranges::find(all, "done", &Scene::name);
    for (const bool dark : {false, true}) {
        comparePicture(gallery.picture(*done, {.dark = dark, .composited = false}),
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
        for (const Argb surface : {palette.surface, palette.surfaceRaised, palette.chosen, palette.track}) {
            EXPECT_GE(contrast(palette.text, surface), 4.5);
            EXPECT_GE(contrast(palette.textSecondary, surface), 4.5);
            for (const Argb glyph : {palette.accent, palette.success, palette.error, palette.learned}) {
                EXPECT_GE(contrast(glyph, surface), 3);
            }
        }
        EXPECT_GE(contrast(palette.onAccent, palette.accent), 4.5);
    }
}

}  // namespace
}  // namespace dorix::testing
