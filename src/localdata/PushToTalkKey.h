#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace dorix {

/// The modifier key that the user holds to dictate.
enum class PushToTalkKey { rightOption, rightCommand, rightControl, fn };

inline constexpr std::array allPushToTalkKeys{PushToTalkKey::rightOption, PushToTalkKey::rightCommand,
                                              PushToTalkKey::rightControl, PushToTalkKey::fn};

/// The name under which a key is stored; the other way gives nothing for a name that is unknown.
std::string_view storedName(PushToTalkKey key);
std::optional<PushToTalkKey> pushToTalkKey(std::string_view storedName);

/// The key's name for people, in Spanish; it goes through tr.
std::string_view label(PushToTalkKey key);

}  // namespace dorix
