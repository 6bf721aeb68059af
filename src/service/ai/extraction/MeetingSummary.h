#pragma once

#include "service/ai/extraction/Frame.h"

#include <string>
#include <string_view>

namespace dorix::service {

/// What a meeting was about, what was decided and who is to do what until when, each quoted as it was said,
/// with its time. A part of which nothing was said is left out; empty when that is all of them. Linear in the
/// transcript; pure.
std::string meetingSummary(std::string_view transcript, const Frame& frame);

}  // namespace dorix::service
