#pragma once

#include "service/mail/Mailer.h"

#include <atomic>
#include <boost/asio/thread_pool.hpp>
#include <memory>

namespace dorix::service {

class Metrics;

/// Delivers codes on a thread of its own, one after the other, each tried a few times. What fails is logged
/// and counted; whoever waits for it asks for another code.
class MailQueue {
 public:
    MailQueue(std::unique_ptr<Mailer> mailer, Metrics& metrics);
    /// Delivers what is waiting, without trying again.
    ~MailQueue();

    /// Any thread. A queue that is full beyond all measure drops it.
    void add(CodeMail mail);

 private:
    void deliver(const CodeMail& mail);

    std::unique_ptr<Mailer> mailer_;
    Metrics& metrics_;
    std::atomic<int> waiting_ = 0;
    std::atomic<bool> isEnding_ = false;
    boost::asio::thread_pool thread_{1};
};

}  // namespace dorix::service
