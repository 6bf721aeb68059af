#include "service/mail/OutboxMailer.h"

#include "base/Uuid.h"
#include "service/mail/MailText.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace dorix::service {

namespace {

class Descriptor {
 public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }

 private:
    int number_;
};

void require(bool holds) {
    if (!holds) throw std::runtime_error("outbox: " + std::system_category().message(errno));
}

void writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        require(written > 0);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void writeFile(const std::filesystem::path& file, std::string_view bytes) {
    const Descriptor descriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    require(descriptor.get() >= 0);
    writeAll(descriptor.get(), bytes);
    require(::fsync(descriptor.get()) == 0);
}

/// Names sort by time.
std::string fileName(std::time_t now) {
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> time{};
    std::strftime(time.data(), time.size(), "%Y%m%dT%H%M%SZ", &parts);
    return std::string(time.data()) + "-" + makeUuid();
}

}  // namespace

OutboxMailer::OutboxMailer(std::filesystem::path folder, std::string from)
    : folder_(std::move(folder)), from_(std::move(from)) {}

void OutboxMailer::send(const CodeMail& mail) {
    std::filesystem::create_directories(folder_);
    const auto now = std::time(nullptr);
    const auto name = fileName(now);
    const auto unfinished = folder_ / ("." + name + ".part");
    try {
        writeFile(unfinished, mailText(mail, from_, now));
        std::filesystem::rename(unfinished, folder_ / (name + ".eml"));
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(unfinished, ignored);
        throw;
    }
}

}  // namespace dorix::service
