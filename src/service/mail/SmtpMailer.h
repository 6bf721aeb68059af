#pragma once

#include "service/mail/Mailer.h"

#include <string>

namespace dorix::service {

/// Hands messages to a mail server. Over smtps:// from the first byte on TLS, over smtp:// as soon as the
/// server offers it; a password is sent on TLS alone.
class SmtpMailer final : public Mailer {
 public:
    struct Server {
        std::string url;
        std::string from;
        std::string user;  // may be empty, with the password
        std::string password;
    };

    explicit SmtpMailer(Server server);

    void send(const CodeMail& mail) override;

 private:
    Server server_;
};

}  // namespace dorix::service
