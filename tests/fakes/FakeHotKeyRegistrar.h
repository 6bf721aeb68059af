#pragma once

#include "platform/HotKeyRegistrar.h"

#include <map>
#include <utility>

namespace dorix {

/// Hot keys that the test presses.
class FakeHotKeyRegistrar final : public HotKeyRegistrar {
 public:
    struct Chord {
        std::uint16_t keyCode;
        std::uint32_t modifiers;
        HotKeyID id;

        bool operator==(const Chord&) const = default;
    };

    void installEventHandler(Handler handler) override { handler_ = std::move(handler); }
    std::expected<Ref, Status> registerHotKey(std::uint16_t keyCode, std::uint32_t modifiers,
                                              HotKeyID id) override {
        if (refuseWith != 0) return std::unexpected(refuseWith);
        registered[++lastRef_] = {keyCode, modifiers, id};
        return lastRef_;
    }
    void unregisterHotKey(Ref ref) override { registered.erase(ref); }

    void send(std::uint32_t id, std::uint32_t kind) { handler_({0, id}, kind); }

    std::map<Ref, Chord> registered;
    Status refuseWith = 0;

 private:
    Handler handler_;
    Ref lastRef_ = 0;
};

}  // namespace dorix
