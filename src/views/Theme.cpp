#include "views/Theme.h"

#include "views/Tokens.h"

#include <QColor>
#include <QGuiApplication>
#include <QStyleHints>

namespace dorix {

Theme::Theme() {
    map_.insert({
        {"textFont", textFont},
        {"glyphFont", glyphFont},
        {"space", tokens::space},
        {"fontSmall", tokens::fontSmall},
        {"fontBody", tokens::fontBody},
        {"lineSmall", lineSpacing(tokens::fontSmall)},
        {"fontTitle", tokens::fontTitle},
        {"fontLarge", tokens::fontLarge},
        {"lineBody", lineSpacing(tokens::fontBody)},
        {"lineTitle", lineSpacing(tokens::fontTitle)},
        {"lineLarge", lineSpacing(tokens::fontLarge)},
        {"glyph", tokens::glyph},
        {"glyphLarge", tokens::glyphLarge},
        {"bubbleRadius", tokens::bubbleRadius},
        {"cardRadius", tokens::cardRadius},
        {"focusRing", tokens::focusRing},
        {"shadowReach", tokens::shadowReach},
        {"panelHeader", tokens::panelHeader},
        {"panelRow", tokens::panelRow},
        {"panelDay", tokens::panelDay},
        {"sidebar", tokens::sidebar},
        {"narrowSidebar", tokens::narrowSidebar},
        {"richLineHeight", tokens::richLineHeight},
        {"restBeforeHint", tokens::restBeforeHint},
        {"flashedHint", tokens::flashedHint},
        {"turn", tokens::turn},
        {"secondClick", QGuiApplication::styleHints()->mouseDoubleClickInterval()},
        {"composited", true},
    });
    setDark(false);
    setReducesMotion(false);
}

void Theme::setDark(bool dark) {
    const Palette& palette = tokens::palette(dark);
    const auto color = [](Argb value) { return QColor::fromRgba(value); };
    map_.insert({
        {"surface", color(palette.surface)},
        {"surfaceRaised", color(palette.surfaceRaised)},
        {"hairline", color(palette.hairline)},
        {"solidHairline", color(opaqueOn(palette.hairline, palette.surface))},
        {"text", color(palette.text)},
        {"textSecondary", color(palette.textSecondary)},
        {"accent", color(palette.accent)},
        {"success", color(palette.success)},
        {"error", color(palette.error)},
        {"learned", color(palette.learned)},
        {"onAccent", color(palette.onAccent)},
        {"chosen", color(palette.chosen)},
        {"track", color(palette.track)},
    });
}

/// What fades goes on fading; what moves jumps.
void Theme::setReducesMotion(bool reduces) {
    map_.insert({
        {"reducesMotion", reduces},
        {"fadeIn", tokens::motionIn},
        {"fadeBetween", tokens::motionBetween},
        {"fadeOut", tokens::motionOut},
        {"motionBetween", reduces ? 0 : tokens::motionBetween},
    });
}

void Theme::setComposited(bool composited) { map_.insert("composited", composited); }

}  // namespace dorix
