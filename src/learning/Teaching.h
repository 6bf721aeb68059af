#pragma once

namespace dorix {

/// Learns by being shown. Main executor.
class Teaching {
 public:
    virtual ~Teaching() = default;

    virtual bool isTeaching() const = 0;
    virtual void startTeaching() = 0;
    virtual void finishTeaching() = 0;
};

}  // namespace dorix
