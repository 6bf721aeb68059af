#pragma once

#include "service/mail/Mailer.h"

#include <filesystem>
#include <string>

namespace dorix::service {

/// Puts each message into a folder as a file of its own, which is there whole or not at all, for its owner
/// alone.
class OutboxMailer final : public Mailer {
 public:
    OutboxMailer(std::filesystem::path folder, std::string from);

    void send(const CodeMail& mail) override;

 private:
    std::filesystem::path folder_;
    std::string from_;
};

}  // namespace dorix::service
