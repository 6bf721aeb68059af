#pragma once

namespace dorix {

/// Meeting mode. Main executor.
class Meeting {
 public:
    virtual ~Meeting() = default;

    virtual bool isLive() const = 0;
    /// With no title and no application.
    virtual void start() = 0;
    virtual void finish() = 0;
};

}  // namespace dorix
