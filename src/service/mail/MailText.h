#pragma once

#include "service/mail/Mailer.h"

#include <ctime>
#include <string>
#include <string_view>

namespace dorix::service {

/// The message as a mail server takes it (RFC 5322): ASCII with CRLF, the text in quoted-printable, in which
/// the code stands as it is. Pure but for a random id; any thread.
std::string mailText(const CodeMail& mail, std::string_view from, std::time_t now);

/// The text alone.
std::string codeText(const CodeMail& mail);

}  // namespace dorix::service
