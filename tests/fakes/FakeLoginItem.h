#pragma once

#include "base/Error.h"
#include "platform/LoginItem.h"

namespace dorix {

class FakeLoginItem final : public LoginItem {
 public:
    bool registered = false;
    bool refuses = false;

    void registerApplication() override { set(true); }
    void unregisterApplication() override { set(false); }
    bool isRegistered() const override { return registered; }

 private:
    void set(bool value) {
        if (refuses) throw MessageError("refused");
        registered = value;
    }
};

}  // namespace dorix
