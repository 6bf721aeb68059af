#pragma once

#include <cstdint>

namespace dorix {

/// A colour as 0xAARRGGBB.
using Argb = std::uint32_t;

/// The colours of one theme.
struct Palette {
    Argb surface;
    Argb surfaceRaised;
    Argb hairline;
    Argb text;
    Argb textSecondary;
    Argb accent;
    Argb success;
    Argb error;
    Argb learned;
    Argb onAccent;  // text on a surface of the accent
    Argb chosen;    // the surface of the chosen row
    Argb track;     // of what can be pressed, under the pointer
};

/// All that the views take their look from; they use no colour, size or duration of their own.
namespace tokens {

inline constexpr Palette light{
    .surface = 0xFFFFFFFF,
    .surfaceRaised = 0xFFF6F6F4,
    .hairline = 0x14000000,
    .text = 0xFF17181C,
    .textSecondary = 0xFF5C5F66,
    .accent = 0xFF0F766E,
    .success = 0xFF15803D,
    .error = 0xFFB42318,
    .learned = 0xFF6D28D9,
    .onAccent = 0xFFFFFFFF,
    .chosen = 0xFFE1EFED,
    .track = 0xFFECECE9,
};

inline constexpr Palette dark{
    .surface = 0xFF1C1D21,
    .surfaceRaised = 0xFF26272C,
    .hairline = 0x1AFFFFFF,
    .text = 0xFFF2F2F0,
    .textSecondary = 0xFFA6A8AE,
    .accent = 0xFF2DD4BF,
    .success = 0xFF4ADE80,
    .error = 0xFFF97066,
    .learned = 0xFFA78BFA,
    .onAccent = 0xFF0B1F1C,
    .chosen = 0xFF1E3836,
    .track = 0xFF303238,
};

constexpr const Palette& palette(bool isDark) { return isDark ? dark : light; }

// Points.
inline constexpr int space = 4;
inline constexpr int fontSmall = 12;
inline constexpr int fontBody = 13;
inline constexpr int fontTitle = 15;
inline constexpr int fontLarge = 20;
inline constexpr int lineHeight = 140;  // per cent of the font's size
inline constexpr int glyph = 16;
inline constexpr int glyphLarge = 20;
inline constexpr int bubbleRadius = 10;
inline constexpr int cardRadius = 14;
inline constexpr int focusRing = 2;
inline constexpr int shadowReach =
    12;  // how far the soft shadow goes beyond its shape, downwards and sideways

// Of the panel.
inline constexpr int panelHeader = 48;
inline constexpr int panelRow = 52;
inline constexpr int panelDay = 28;
inline constexpr int sidebar = 152;
inline constexpr int narrowSidebar = 52;  // glyphs alone
inline constexpr int settingsWidth = 760;
inline constexpr int settingsHeight = 560;
inline constexpr int richLineHeight = 116;  // per cent of the font's own spacing; as far apart as other lines

// Milliseconds.
inline constexpr int motionIn = 120;
inline constexpr int motionBetween = 200;
inline constexpr int motionOut = 250;
inline constexpr int restBeforeHint = 700;  // of the pointer
inline constexpr int flashedHint = 3000;
inline constexpr int turn = 1200;  // of the arc that says that something goes on

// How dark the shadow is beside its shape.
inline constexpr double shadowStrength = 0.14;

}  // namespace tokens

/// The text lines of one size are this many whole points apart.
constexpr int lineSpacing(int fontSize) { return (fontSize * tokens::lineHeight + 50) / 100; }

/// A hairline as it looks on the surface, for where nothing may shine through.
constexpr Argb opaqueOn(Argb color, Argb surface) {
    const auto part = [&](int shift) {
        const std::uint32_t alpha = color >> 24U;
        const std::uint32_t over = (color >> shift) & 0xFFU;
        const std::uint32_t under = (surface >> shift) & 0xFFU;
        return ((over * alpha + under * (255 - alpha)) / 255) << shift;
    };
    return 0xFF000000U | part(16) | part(8) | part(0);
}

}  // namespace dorix
