#include "service/mail/NotificationMailer.h"

#include "service/mail/MailText.h"
#include "service/words/Messages.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <system_error>

namespace dorix::service {

namespace {

constexpr std::uint64_t longestCall = 5'000'000;  // microseconds
constexpr std::int32_t shownFor = 60'000;         // milliseconds

struct Closer {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};

void require(int result) {
    if (result < 0) throw std::runtime_error("notification: " + std::system_category().message(-result));
}

}  // namespace

void NotificationMailer::send(const CodeMail& mail) {
    sd_bus* opened = nullptr;
    require(sd_bus_open_user(&opened));
    // Once a code: a connection that is kept would have to be watched for its end.
    const std::unique_ptr<sd_bus, Closer> bus(opened);
    require(sd_bus_set_method_call_timeout(bus.get(), longestCall));
    const std::string subject(say(Message::codeSubject, mail.language));
    const auto text = codeText(mail);
    require(sd_bus_call_method(bus.get(), "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                               "org.freedesktop.Notifications", "Notify", nullptr, nullptr, "susssasa{sv}i",
                               "DORIX", std::uint32_t{0}, "dialog-password", subject.c_str(), text.c_str(), 0,
                               0, shownFor));
}

}  // namespace dorix::service
