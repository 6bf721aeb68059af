#include "localdata/TranslationTable.h"
#include "views/Application.h"
#include "views/DesktopWords.h"
#include "views/Pictures.h"
#include "views/ShownText.h"
#include "views/Tokens.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QRawFont>
#include <array>
#include <cmath>
#include <set>

namespace dorix::testing {
namespace {

/// The toolkit draws into memory. It goes before the end of main, where it still finds all that it needs.
class Toolkit : public ::testing::Environment {
 public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        if (!qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) qputenv("QT_SCALE_FACTOR", "1");
        application_ = makeApplication(count_, arguments_.data(), true);
    }
    void TearDown() override { application_.reset(); }

 private:
    std::string name_ = "views_test";
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    int count_ = 1;
    std::unique_ptr<QCoreApplication> application_;
};

const auto* const toolkit = ::testing::AddGlobalTestEnvironment(new Toolkit);

/// In the scale of the process, which is QT_SCALE_FACTOR's.
std::vector<Picture> allPictures() {
    if (qGuiApp->devicePixelRatio() == 2) {
        auto large = largePanelPictures();
        for (auto& picture : largeSettingsPictures()) large.push_back(std::move(picture));
        for (auto& picture : largeCardPictures()) large.push_back(std::move(picture));
        return large;
    }
    auto pictures = iconPictures();
    for (auto& picture : panelPictures()) pictures.push_back(std::move(picture));
    for (auto& picture : cardPictures()) pictures.push_back(std::move(picture));
    for (auto& picture : accountPictures()) pictures.push_back(std::move(picture));
    for (auto& picture : onboardingPictures()) pictures.push_back(std::move(picture));
    for (auto& picture : settingsPictures()) pictures.push_back(std::move(picture));
    return pictures;
}

TEST(KeptPicturesTest, EveryStateLooksAsItDid) {
    if (const auto reason = whyNotComparable(); !reason.empty()) {
        GTEST_SKIP() << "Pictures are not compared: " << reason;
    }
    for (const Picture& picture : allPictures()) {
        for (const Style& style : picture.styles) {
            comparePicture(picture.show(style)->picture(), picture.name, style);
        }
    }
}

bool isGlyph(const ShownText& shown) { return shown.font().family() == glyphFont; }

TEST(PictureTest, ALostGlyphAndAShiftedTextAreSeen) {
    const auto exhibit = panelPictures().front().show({});
    const QImage whole = exhibit->picture();
    int glyphs = 0;
    const auto& panel = exhibit->windows.front();
    for (const ShownText& shown : shownTexts(*panel.window, panel.shape)) {
        SCOPED_TRACE(shown.text().toStdString());
        if (isGlyph(shown)) {
            ++glyphs;
            shown.item.setOpacity(0);
            EXPECT_TRUE(difference(whole, exhibit->picture()).isSeen());
            shown.item.setOpacity(1);
        } else {
            shown.item.setProperty("leftPadding", 2);
            EXPECT_TRUE(difference(whole, exhibit->picture()).isSeen());
            shown.item.setProperty("leftPadding", 0);
        }
    }
    EXPECT_GE(glyphs, 15);
    EXPECT_FALSE(difference(whole, exhibit->picture()).isSeen()) << "all is as it was";
}

/// The texts of the program in this language, as they are shown.
std::set<QString> ownTexts(const std::string& language) {
    std::set<QString> texts;
    for (const auto& row : translationTable()) {
        texts.insert(QString::fromStdString(desktopWords(language == "es" ? row.spanish : row.english)));
    }
    return texts;
}

void expectWhole(const ShownText& shown, const Exhibit::Hung& hung, const std::set<QString>& own) {
    const QString text = shown.text();
    SCOPED_TRACE(text.toStdString());
    if (isGlyph(shown)) {
        EXPECT_TRUE(QRawFont::fromFont(shown.font()).supportsCharacter(text.front())) << "no such glyph";
    }
    EXPECT_FALSE(own.contains(text) && shown.item.property("truncated").toBool()) << "is cut short";
    EXPECT_GE(shown.whole.left() + 1, shown.seen.left()) << "is cut off";
    EXPECT_LE(shown.whole.right() - 1, shown.seen.right()) << "is cut off";
    EXPECT_TRUE(hung.shape.contains(shown.seen));
    // The blank that a line is broken at may hang over.
    const double blank = QFontMetricsF(shown.font()).horizontalAdvance(' ');
    EXPECT_LE(shown.item.boundingRect().width(), shown.item.width() + blank) << "is wider than its place";
}

void expectApart(const std::vector<ShownText>& texts) {
    for (auto one = texts.begin(); one != texts.end(); ++one) {
        for (auto other = one + 1; other != texts.end(); ++other) {
            const QRectF shared = one->seen & other->seen;
            EXPECT_FALSE(shared.width() > 1 && shared.height() > 2)
                << one->text().toStdString() << " lies over " << other->text().toStdString();
        }
    }
}

TEST(TextTest, EveryTextIsWholeAndApartFromTheOthers) {
    for (const Picture& picture : allPictures()) {
        for (const std::string language : {"es", "en"}) {
            SCOPED_TRACE(picture.name + "-" + language);
            const auto own = ownTexts(language);
            const auto exhibit = picture.show({.language = language});
            for (const auto& hung : exhibit->windows) {
                const auto texts = shownTexts(*hung.window, hung.shape);
                for (const auto& shown : texts) expectWhole(shown, hung, own);
                expectApart(texts);
            }
        }
    }
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
