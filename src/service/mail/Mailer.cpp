#include "service/mail/Mailer.h"

#include "service/mail/NotificationMailer.h"
#include "service/mail/OutboxMailer.h"
#include "service/mail/SmtpMailer.h"
#include "service/settings/Settings.h"

#include <string_view>

namespace dorix::service {

std::unique_ptr<Mailer> makeMailer(const Settings& settings) {
    constexpr std::string_view outbox = "outbox:";
    if (settings.mail.starts_with(outbox)) {
        return std::make_unique<OutboxMailer>(settings.mail.substr(outbox.size()), settings.mailFrom);
    }
    if (settings.mail == "notification") return std::make_unique<NotificationMailer>();
    return std::make_unique<SmtpMailer>(SmtpMailer::Server{.url = settings.mail,
                                                           .from = settings.mailFrom,
                                                           .user = settings.mailUser,
                                                           .password = settings.mailPassword});
}

}  // namespace dorix::service
