#include "context/Glyph.h"

#include <algorithm>
#include <array>

namespace dorix {

namespace {

struct Row {
    Ph glyph;
    std::string_view name;
};

constexpr auto rows = std::to_array<Row>({
    {Ph::appWindow, "appWindow"},
    {Ph::whatsappLogo, "whatsappLogo"},
    {Ph::chatCircle, "chatCircle"},
    {Ph::envelopeSimple, "envelopeSimple"},
    {Ph::slackLogo, "slackLogo"},
    {Ph::chatsCircle, "chatsCircle"},
    {Ph::wordLogo, "wordLogo"},
    {Ph::fileText, "fileText"},
    {Ph::notionLogo, "notionLogo"},
    {Ph::notePencil, "notePencil"},
    {Ph::code, "code"},
    {Ph::terminalWindow, "terminalWindow"},
    {Ph::browser, "browser"},
    {Ph::linkedinLogo, "linkedinLogo"},
});

}  // namespace

std::string_view glyphName(Ph glyph) { return std::ranges::find(rows, glyph, &Row::glyph)->name; }

}  // namespace dorix
