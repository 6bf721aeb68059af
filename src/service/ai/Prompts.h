#pragma once

#include "base/Json.h"
#include "service/ai/Requests.h"

#include <cstdint>
#include <string_view>

/// The messages of a chat with a language model ("messages" of an OpenAI-compatible call). Orders are in the
/// system's message alone, and hold no text of anybody else. What was dictated, selected, opened or is on the
/// screen comes in the user's message, each piece between two lines that hold a boundary.
///
/// The caller makes `boundary` anew for every call, out of 128 random bits or more, in letters and digits;
/// where a text should hold it all the same it is made longer until none does. Pure; any thread.
namespace dorix::service {

enum class Pictures : std::uint8_t { leftOut, sent };

Json writeMessages(const WriteRequest& request, std::string_view boundary, Pictures pictures);
/// `caller` is the language of the answer where the question does not say it.
Json askMessages(const AskRequest& request, Language caller, std::string_view boundary, Pictures pictures);
Json transformMessages(const TransformRequest& request, std::string_view boundary);

}  // namespace dorix::service
