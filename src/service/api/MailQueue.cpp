#include "service/api/MailQueue.h"

#include "base/Log.h"
#include "service/accounts/Accounts.h"
#include "service/metrics/Metrics.h"

#include <algorithm>
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
constexpr std::chrono::seconds endPatience{10};
constexpr std::chrono::seconds codeLasts{codeSeconds};
}  // namespace

MailQueue::MailQueue(std::unique_ptr<Mailer> mailer, Metrics& metrics)
    : mailer_(std::move(mailer)), metrics_(metrics) {}

MailQueue::~MailQueue() {
    isEnding_ = true;
    endsAt_ = Clock::now() + endPatience;
    thread_.join();
}

void MailQueue::add(CodeMail mail) {
    if (waiting_ >= mostWaiting) {
        logLine("event=mail-dropped why=full");
        return fail();
    }
    ++waiting_;
    boost::asio::post(thread_, [this, mail = std::move(mail), due = Clock::now() + codeLasts] {
        if (Clock::now() < std::min(due, endsAt_.load())) {
            deliver(mail);
        } else {
            logLine("event=mail-dropped why=late");
            fail();
        }
        --waiting_;
    });
}

void MailQueue::fail() { ++metrics_.mailsFailed; }

void MailQueue::deliver(const CodeMail& mail) {
    for (int attempt = 1;; ++attempt) {
        try {
            mailer_->send(mail);
            ++metrics_.mailsSent;
            return;
        } catch (const std::exception& error) {
            logLine("event=mail-failure attempt=" + std::to_string(attempt) + " what=" + error.what());
            const bool isFinal = dynamic_cast<const MailRefused*>(&error) != nullptr;
            if (isFinal || attempt == tries || isEnding_) return fail();
        }
        std::this_thread::sleep_for(pauseBetweenTries);
    }
}

}  // namespace dorix::service
