#pragma once

#include "service/ai/Language.h"

#include <memory>
#include <string>

namespace dorix::service {

struct Settings;

/// A code on its way to somebody.
struct CodeMail {
    std::string to;
    std::string code;
    Language language = Language::spanish;
};

/// Delivers codes. One thread; blocks for seconds at most.
class Mailer {
 public:
    virtual ~Mailer() = default;

    /// Throws std::runtime_error when it could not be delivered, in words without the address or the code.
    virtual void send(const CodeMail& mail) = 0;
};

/// As the settings say, which have been read without a fault.
std::unique_ptr<Mailer> makeMailer(const Settings& settings);

}  // namespace dorix::service
