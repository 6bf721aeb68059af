#pragma once

#include "localdata/HistoryItem.h"

#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// The JSON text that a row keeps of what is known besides: an object with the fields that are present.
/// Nothing when a text is no UTF-8. Pure, any thread.
std::optional<std::string> encodeMeta(const HistoryItem::Meta& meta);

/// The other way. Null counts as absent, and keys that are unknown are passed over. Text that is no such
/// object gives an empty Meta, as does one field of another type than expected: half of a row would mislead.
HistoryItem::Meta decodeMeta(std::string_view json);

}  // namespace dorix
