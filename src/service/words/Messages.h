#pragma once

#include "service/ai/Language.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace dorix::service {

/// What the service says to whoever calls it.
enum class Message : std::uint8_t {
    badEmail,
    badBody,
    codeRefused,
    tooManyCodes,
    tooManyTries,
    dayUsedUp,
    noSession,
    unknownSession,
    unknownPath,
    wrongMethod,
    bodyTooLong,
    notOffered,
    foreignOrigin,
    notForCaller,
    storageDown,
    modelDown,
    modelUnclear,
    modelCutOff,
    internal,
    codeSubject,
    codeText,  // with %CODE%
};

/// Pure; any thread.
std::string_view say(Message message, Language language);

/// The language that a header or a member "lang" asks for; Spanish is what is not told otherwise.
Language languageAsked(std::string_view tag);

}  // namespace dorix::service
