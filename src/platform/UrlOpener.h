#pragma once

#include <string>

namespace dorix {

/// Opens addresses in the application that the user has chosen for them. Main executor; returns at once.
class UrlOpener {
 public:
    virtual ~UrlOpener() = default;

    /// Whether the address could be handed over; not whether anything is shown. What has no scheme is
    /// refused.
    virtual bool open(const std::string& url) = 0;
};

class UnavailableUrlOpener final : public UrlOpener {
 public:
    bool open(const std::string&) override { return false; }
};

}  // namespace dorix
