#pragma once

#include "base/Error.h"

namespace dorix {

/// Whether the program starts with the session; the system keeps the state. Main executor; touches a small
/// file at most.
class LoginItem {
 public:
    virtual ~LoginItem() = default;

    /// Both throw an Error when the system refuses.
    virtual void registerApplication() = 0;
    virtual void unregisterApplication() = 0;
    virtual bool isRegistered() const = 0;
};

class UnavailableLoginItem final : public LoginItem {
 public:
    void registerApplication() override { throw MessageError("login items are not available"); }
    void unregisterApplication() override { throw MessageError("login items are not available"); }
    bool isRegistered() const override { return false; }
};

}  // namespace dorix
