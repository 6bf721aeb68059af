#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <string>

namespace dorix {

struct HotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t id = 0;

    bool operator==(const HotKeyID&) const = default;
};

/// A chord as its keys are printed, for the log: "Alt+Shift+Space". Any thread.
std::string chordName(std::uint16_t keyCode, std::uint32_t modifiers);

/// System-wide chords that the system delivers to this application alone. Main executor; nothing blocks.
class HotKeyRegistrar {
 public:
    static constexpr std::uint32_t eventPressed = 5;
    static constexpr std::uint32_t eventReleased = 6;

    using Ref = std::uint64_t;
    using Status = std::int32_t;
    /// `time` tells when it happened, on the main executor's clock; it may have waited to be told.
    using Handler = std::function<void(HotKeyID id, std::uint32_t kind, double time)>;

    virtual ~HotKeyRegistrar() = default;

    /// The one handler of all hot keys; a second replaces the first. A key held down gives one pressed and,
    /// when it goes up, one released.
    virtual void installEventHandler(Handler handler) = 0;

    /// The chord of `keyCode` and hot-key modifier bits, whatever lock modifiers are on. Fails with a status
    /// other than 0 when the system or another program has it.
    virtual std::expected<Ref, Status> registerHotKey(std::uint16_t keyCode, std::uint32_t modifiers,
                                                      HotKeyID id) = 0;

    /// Whether the chord comes to us. One that a change of layout has brought to where another program has it
    /// is tried again.
    virtual bool isDelivered(Ref ref) = 0;

    /// Unknown refs are ignored.
    virtual void unregisterHotKey(Ref ref) = 0;
};

/// Where the session has no such chords: every registration fails.
class UnavailableHotKeyRegistrar final : public HotKeyRegistrar {
 public:
    static constexpr Status notSupported = -50;

    void installEventHandler(Handler) override {}
    std::expected<Ref, Status> registerHotKey(std::uint16_t, std::uint32_t, HotKeyID) override {
        return std::unexpected(notSupported);
    }
    bool isDelivered(Ref) override { return false; }
    void unregisterHotKey(Ref) override {}
};

}  // namespace dorix
