#include "service/mail/SmtpMailer.h"

#include "service/mail/MailText.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace dorix::service {

namespace {

constexpr long longestSending = 30;  // seconds

struct HandleCloser {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct ListCloser {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using Handle = std::unique_ptr<CURL, HandleCloser>;

std::size_t readMore(char* buffer, std::size_t size, std::size_t count, void* remaining) {
    auto& rest = *static_cast<std::string_view*>(remaining);
    const auto taken = std::min(size * count, rest.size());
    std::memcpy(buffer, rest.data(), taken);
    rest.remove_prefix(taken);
    return taken;
}

void introduce(CURL* handle, const SmtpMailer::Server& server) {
    curl_easy_setopt(handle, CURLOPT_URL, server.url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, longestSending);
    curl_easy_setopt(handle, CURLOPT_USE_SSL,
                     static_cast<long>(server.user.empty() ? CURLUSESSL_TRY : CURLUSESSL_ALL));
    if (server.user.empty()) return;
    curl_easy_setopt(handle, CURLOPT_USERNAME, server.user.c_str());
    curl_easy_setopt(handle, CURLOPT_PASSWORD, server.password.c_str());
}

}  // namespace

SmtpMailer::SmtpMailer(Server server) : server_(std::move(server)) {}

void SmtpMailer::send(const CodeMail& mail) {
    const Handle handle(curl_easy_init());
    if (!handle) throw std::runtime_error("smtp: no memory");
    introduce(handle.get(), server_);
    const auto from = "<" + server_.from + ">";
    const auto to = "<" + mail.to + ">";
    const std::unique_ptr<curl_slist, ListCloser> recipients(curl_slist_append(nullptr, to.c_str()));
    const auto text = mailText(mail, server_.from, std::time(nullptr));
    std::string_view rest = text;
    curl_easy_setopt(handle.get(), CURLOPT_MAIL_FROM, from.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_MAIL_RCPT, recipients.get());
    curl_easy_setopt(handle.get(), CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_READFUNCTION, readMore);
    curl_easy_setopt(handle.get(), CURLOPT_READDATA, &rest);
    // The library's own words only: what the server says may repeat the address.
    const auto result = curl_easy_perform(handle.get());
    if (result == CURLE_OK) return;
    long answer = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &answer);
    auto words = std::string("smtp: ") + curl_easy_strerror(result);
    if (answer >= 500) throw MailRefused(words + " (status " + std::to_string(answer) + ")");
    throw std::runtime_error(words);
}

}  // namespace dorix::service
