#include "service/mail/MailText.h"

#include "base/Uuid.h"
#include "base/text/Text.h"
#include "service/words/Messages.h"

#include <array>
#include <cstddef>

namespace dorix::service {

namespace {

constexpr std::size_t longestLine = 75;

bool isPlain(char character) { return character >= ' ' && character <= '~' && character != '='; }

std::string escaped(char character) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(character);
    return {'=', digits[byte >> 4U], digits[byte & 0xFU]};
}

std::string quotedPrintable(std::string_view text) {
    std::string encoded;
    std::size_t length = 0;
    for (const char character : text) {
        if (character == '\n') {
            encoded += "\r\n";
            length = 0;
            continue;
        }
        const auto piece = isPlain(character) ? std::string(1, character) : escaped(character);
        if (length + piece.size() > longestLine) {
            encoded += "=\r\n";
            length = 0;
        }
        encoded += piece;
        length += piece.size();
    }
    return encoded;
}

/// A text in a message's head (RFC 2047).
std::string encodedWord(std::string_view text) {
    std::string word = "=?UTF-8?Q?";
    for (const char character : text) {
        word += isPlain(character) && character != ' ' && character != '?' && character != '_'
                    ? std::string(1, character)
                    : escaped(character);
    }
    return word + "?=";
}

std::string dateOf(std::time_t now) {
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 64> date{};
    // Nobody sets a locale, so the names are the English ones that the format asks for.
    std::strftime(date.data(), date.size(), "%a, %d %b %Y %H:%M:%S +0000", &parts);
    return date.data();
}

}  // namespace

std::string codeText(const CodeMail& mail) {
    return text::replaceAll(say(Message::codeText, mail.language), "%CODE%", mail.code);
}

std::string mailText(const CodeMail& mail, std::string_view from, std::time_t now) {
    const auto domain = from.substr(from.find('@') + 1);
    std::string message;
    const auto field = [&](std::string_view name, std::string_view value) {
        message.append(name).append(": ").append(value).append("\r\n");
    };
    field("From", "DORIX <" + std::string(from) + ">");
    field("To", "<" + mail.to + ">");
    field("Subject", encodedWord(say(Message::codeSubject, mail.language)));
    field("Date", dateOf(now));
    field("Message-ID", "<" + makeUuid() + "@" + std::string(domain) + ">");
    field("Auto-Submitted", "auto-generated");
    field("MIME-Version", "1.0");
    field("Content-Type", "text/plain; charset=utf-8");
    field("Content-Transfer-Encoding", "quoted-printable");
    return message + "\r\n" + quotedPrintable(codeText(mail));
}

}  // namespace dorix::service
