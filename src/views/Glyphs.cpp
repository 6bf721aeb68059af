#include "views/Glyphs.h"

namespace dorix {

QString glyph(PanelSection section) {
    switch (section) {
        case PanelSection::todo:
            return QStringLiteral("\uf2da");  // history
        case PanelSection::dictado:
            return QStringLiteral("\uf36e");  // microphone-outline
        case PanelSection::preguntas:
            return QStringLiteral("\uf186");  // comment-question-outline
        case PanelSection::reunion:
            return QStringLiteral("\uf00f");  // account-multiple-outline
        case PanelSection::busqueda:
            return QStringLiteral("\uf0be");  // book-open-variant
        case PanelSection::accion:
            break;
    }
    return QStringLiteral("\uf241");  // flash
}

QString glyph(VerbMark mark) {
    switch (mark) {
        case VerbMark::none:
            break;
        case VerbMark::done:
            return QStringLiteral("\uf12c");  // check
        case VerbMark::speak:
            return QStringLiteral("\uf57e");  // volume-high
        case VerbMark::silence:
            return QStringLiteral("\uf4db");  // stop
        case VerbMark::remove:
            return QStringLiteral("\uf1c0");  // delete
        case VerbMark::close:
            return QStringLiteral("\uf156");  // close
    }
    return {};
}

QString glyph(Ph app) {
    switch (app) {
        case Ph::appWindow:
            return QStringLiteral("\uf614");  // application
        case Ph::whatsappLogo:
            return QStringLiteral("\uf5a3");  // whatsapp
        case Ph::chatCircle:
            return QStringLiteral("\uf365");  // message-outline
        case Ph::envelopeSimple:
            return QStringLiteral("\uf1f0");  // email-outline
        case Ph::slackLogo:
            return QStringLiteral("\uf4b1");  // slack
        case Ph::chatsCircle:
            return QStringLiteral("\uf28c");  // forum
        case Ph::wordLogo:
            return QStringLiteral("\uf22d");  // file-word-box
        case Ph::fileText:
            return QStringLiteral("\uf219");  // file-document
        case Ph::notionLogo:
            return QStringLiteral("\uf39e");  // note-text
        case Ph::notePencil:
            return QStringLiteral("\uf3ed");  // pencil-box-outline
        case Ph::code:
            return QStringLiteral("\uf174");  // code-tags
        case Ph::terminalWindow:
            return QStringLiteral("\uf18d");  // console
        case Ph::browser:
            return QStringLiteral("\uf59f");  // web
        case Ph::linkedinLogo:
            break;
    }
    return QStringLiteral("\uf33c");  // linkedin-box
}

}  // namespace dorix
