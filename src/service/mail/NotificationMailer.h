#pragma once

#include "service/mail/Mailer.h"

namespace dorix::service {

/// Shows the code on the desktop of the user who runs the service, as a notification. Whoever sits there is
/// taken for whoever asked.
class NotificationMailer final : public Mailer {
 public:
    void send(const CodeMail& mail) override;
};

}  // namespace dorix::service
