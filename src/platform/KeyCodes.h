#pragma once

#include <cstdint>

namespace dorix {

/// Virtual key codes: positions on the keyboard, but for the letters, which stand for the key that types
/// them.
namespace keycode {
inline constexpr std::uint16_t c = 8;
inline constexpr std::uint16_t v = 9;
inline constexpr std::uint16_t space = 49;
inline constexpr std::uint16_t escape = 53;
inline constexpr std::uint16_t rightCommand = 54;
inline constexpr std::uint16_t leftCommand = 55;
inline constexpr std::uint16_t leftShift = 56;
inline constexpr std::uint16_t capsLock = 57;
inline constexpr std::uint16_t leftOption = 58;
inline constexpr std::uint16_t leftControl = 59;
inline constexpr std::uint16_t rightShift = 60;
inline constexpr std::uint16_t rightOption = 61;
inline constexpr std::uint16_t rightControl = 62;
inline constexpr std::uint16_t function = 63;
/// A key that has no code here; it still counts as a key.
inline constexpr std::uint16_t other = 0xFFFF;
}  // namespace keycode

/// Bits of an event's modifier flags. The device-independent bits say that either twin is down; the
/// device-side bits say which one.
namespace modifier {
inline constexpr std::uint64_t capsLock = 0x10000;
inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;
inline constexpr std::uint64_t command = 0x100000;
inline constexpr std::uint64_t function = 0x800000;

inline constexpr std::uint64_t deviceLeftControl = 0x1;
inline constexpr std::uint64_t deviceLeftShift = 0x2;
inline constexpr std::uint64_t deviceRightShift = 0x4;
inline constexpr std::uint64_t deviceLeftCommand = 0x8;
inline constexpr std::uint64_t deviceRightCommand = 0x10;
inline constexpr std::uint64_t deviceLeftOption = 0x20;
inline constexpr std::uint64_t deviceRightOption = 0x40;
inline constexpr std::uint64_t deviceRightControl = 0x2000;
}  // namespace modifier

/// Modifier bits of a hot key.
namespace hotkeymodifier {
inline constexpr std::uint32_t command = 0x100;
inline constexpr std::uint32_t shift = 0x200;
inline constexpr std::uint32_t option = 0x800;
inline constexpr std::uint32_t control = 0x1000;
}  // namespace hotkeymodifier

}  // namespace dorix
