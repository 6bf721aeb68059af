#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace dorix::service {

/// What an answer may have to hold, as bits of a set.
using Kinds = std::uint16_t;

namespace kinds {

inline constexpr Kinds time = 1U << 0U;  // a day or an hour
inline constexpr Kinds duration = 1U << 1U;
inline constexpr Kinds often = 1U << 2U;
inline constexpr Kinds money = 1U << 3U;
inline constexpr Kinds number = 1U << 4U;
inline constexpr Kinds percent = 1U << 5U;
inline constexpr Kinds degrees = 1U << 6U;
inline constexpr Kinds phone = 1U << 7U;
inline constexpr Kinds person = 1U << 8U;
inline constexpr Kinds place = 1U << 9U;
inline constexpr Kinds reason = 1U << 10U;

/// Those that a sentence hardly holds by chance.
inline constexpr Kinds telling = time | duration | often | money | percent | degrees | phone;

}  // namespace kinds

/// Those of which the answer to a folded question holds one; empty when any sentence may answer. Linear;
/// pure.
Kinds kindsAsked(std::string_view foldedQuestion);

/// Those that a text holds, given its folded words too, and whether it names somebody. Linear; pure.
Kinds kindsIn(std::string_view text, const std::vector<std::string_view>& foldedWords, bool namesSomebody);

}  // namespace dorix::service
