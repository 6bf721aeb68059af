#pragma once

#include "service/ai/Language.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace dorix::service {

struct Settings;

/// A code on its way to somebody.
struct CodeMail {
    std::string to;
    std::string code;
    Language language = Language::spanish;
};

/// The mail server does not take this message, and will not take it later either.
class MailRefused final : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Delivers codes. One thread; blocks for seconds at most.
class Mailer {
 public:
    virtual ~Mailer() = default;

    /// Throws std::runtime_error when it could not be delivered, in words without the address or the code;
    /// MailRefused when another try is of no use.
    virtual void send(const CodeMail& mail) = 0;
};

/// As the settings say, which have been read without a fault.
std::unique_ptr<Mailer> makeMailer(const Settings& settings);

}  // namespace dorix::service
