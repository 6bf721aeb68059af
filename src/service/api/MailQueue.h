#pragma once

#include "service/mail/Mailer.h"

#include <atomic>
#include <boost/asio/thread_pool.hpp>
#include <chrono>
#include <memory>

namespace dorix::service {

class Metrics;

/// Delivers codes on a thread of its own, one after the other, each tried a few times. What fails is logged
/// and counted; whoever waits for it asks for another code.
class MailQueue {
 public:
    MailQueue(std::unique_ptr<Mailer> mailer, Metrics& metrics);
    /// Delivers what is waiting, without trying again, for some seconds.
    ~MailQueue();

    /// Any thread. A queue that is full beyond all measure drops it, and so does one that comes to it when
    /// the code is good no more.
    void add(CodeMail mail);

 private:
    using Clock = std::chrono::steady_clock;

    void deliver(const CodeMail& mail);
    void fail();

    std::unique_ptr<Mailer> mailer_;
    Metrics& metrics_;
    std::atomic<int> waiting_ = 0;
    std::atomic<bool> isEnding_ = false;
    std::atomic<Clock::time_point> endsAt_ = Clock::time_point::max();
    boost::asio::thread_pool thread_{1};
};

}  // namespace dorix::service
