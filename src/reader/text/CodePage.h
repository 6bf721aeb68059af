#pragma once

#include <memory>
#include <string>
#include <string_view>

struct UConverter;

namespace dorix::reader {

/// Turns bytes of one of Windows' code pages into UTF-8. One thread.
class CodePage {
 public:
    /// By its number, such as 1252; one that is not known is taken for that.
    explicit CodePage(int number);

    /// What is no character there becomes U+FFFD. Characters of several bytes have to come whole.
    std::string text(std::string_view bytes) const;

 private:
    struct Close {
        void operator()(UConverter* converter) const;
    };
    std::unique_ptr<UConverter, Close> converter_;
};

}  // namespace dorix::reader
