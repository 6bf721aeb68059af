#include "service/api/MailQueue.h"

#include "base/Log.h"
#include "service/metrics/Metrics.h"

#include <boost/asio/post.hpp>
#include <chrono>
#include <exception>
#include <string>
#include <thread>
#include <utility>

namespace dorix::service {

namespace {
constexpr int mostWaiting = 1000;
constexpr int tries = 3;
constexpr std::chrono::seconds pauseBetweenTries{2};
}  // namespace

MailQueue::MailQueue(std::unique_ptr<Mailer> mailer, Metrics& metrics)
    : mailer_(std::move(mailer)), metrics_(metrics) {}

MailQueue::~MailQueue() {
    isEnding_ = true;
    thread_.join();
}

void MailQueue::add(CodeMail mail) {
    if (waiting_ >= mostWaiting) {
        ++metrics_.mailsFailed;
        logLine("event=mail-dropped");
        return;
    }
    ++waiting_;
    boost::asio::post(thread_, [this, mail = std::move(mail)] {
        deliver(mail);
        --waiting_;
    });
}

void MailQueue::deliver(const CodeMail& mail) {
    for (int attempt = 1;; ++attempt) {
        try {
            mailer_->send(mail);
            ++metrics_.mailsSent;
            return;
        } catch (const std::exception& error) {
            logLine("event=mail-failure attempt=" + std::to_string(attempt) + " what=" + error.what());
        }
        if (attempt == tries || isEnding_) break;
        std::this_thread::sleep_for(pauseBetweenTries);
    }
    ++metrics_.mailsFailed;
}

}  // namespace dorix::service
