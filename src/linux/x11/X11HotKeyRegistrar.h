#pragma once

#include "linux/x11/X11KeyInput.h"
#include "platform/HotKeyRegistrar.h"

#include <map>
#include <optional>
#include <vector>

namespace dorix {

/// Hot keys as passive grabs on the root window. A registration waits for the X server's answer; its status
/// is the X error code (10, BadAccess, when another program has the chord). Follows changes of layout.
class X11HotKeyRegistrar final : public HotKeyRegistrar {
 public:
    static constexpr Status badAccess = 10;
    /// The keyboard has no such key.
    static constexpr Status noSuchKey = 2;

    X11HotKeyRegistrar(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input);
    ~X11HotKeyRegistrar() override;

    void installEventHandler(Handler handler) override { handler_ = std::move(handler); }
    std::expected<Ref, Status> registerHotKey(std::uint16_t keyCode, std::uint32_t modifiers,
                                              HotKeyID id) override;
    bool isDelivered(Ref ref) override;
    void unregisterHotKey(Ref ref) override;

 private:
    struct Chord {
        xcb_keycode_t key = 0;
        std::uint16_t modifiers = 0;
        std::uint16_t locks = 0;

        bool operator==(const Chord&) const = default;
    };
    struct HotKey {
        HotKeyID id;
        std::uint16_t keyCode = 0;
        std::uint32_t modifiers = 0;
        std::optional<Chord> grabbed;
        bool isDown = false;
    };

    std::optional<Chord> chordFor(const HotKey& hotKey) const;
    Status grab(const Chord& chord);
    void ungrab(const Chord& chord);
    /// Takes the chords anew whose keys have changed, but for one that is down: its key must be seen going
    /// up.
    void regrabAll();
    void handleKeyPress(const xcb_key_press_event_t& event);
    void handleStroke(const KeyStroke& stroke);
    void release(Ref ref, double time);

    X11Connection& connection_;
    X11Keyboard& keyboard_;
    X11KeyInput& input_;
    Handler handler_;
    std::map<Ref, HotKey> hotKeys_;
    Ref lastRef_ = 0;
    std::vector<Subscription> tokens_;
};

}  // namespace dorix
