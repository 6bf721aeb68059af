#pragma once

#include <string_view>

/// What a language model is told. "%BOUNDARY%" stands for the boundary of the request, "%TONE%" for the
/// instruction of its tone and "%LANGUAGE%" for the language of the caller.
namespace dorix::service::prompttexts {

/// Begins every system message: what counts as an order and what never does.
extern const std::string_view materialRule;
extern const std::string_view write;
extern const std::string_view writeMayAsk;
extern const std::string_view ask;
extern const std::string_view meetingSummary;
extern const std::string_view meetingLive;
extern const std::string_view transform;

}  // namespace dorix::service::prompttexts
