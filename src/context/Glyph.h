#pragma once

#include <cstdint>
#include <string_view>

namespace dorix {

/// The glyphs that stand for applications and sites. Views know how each is drawn.
enum class Ph : std::uint8_t {
    appWindow,
    whatsappLogo,
    chatCircle,
    envelopeSimple,
    slackLogo,
    chatsCircle,
    wordLogo,
    fileText,
    notionLogo,
    notePencil,
    code,
    terminalWindow,
    browser,
    linkedinLogo,
};

/// The case name.
std::string_view glyphName(Ph glyph);

}  // namespace dorix
