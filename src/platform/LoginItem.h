#pragma once

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

}  // namespace dorix
