#pragma once

#include "service/ai/Language.h"

#include <cstdint>
#include <string>

namespace dorix::service {

/// What cannot be done without a language model, and why.
struct Needed {
    enum class Reason : std::uint8_t {
        composing,   // to write something new, or in other words
        picture,     // to see what a picture shows
        noMaterial,  // to answer out of general knowledge: nothing came with the question
        notFound,    // to understand what came: no sentence of it answers word for word
        rewriting,   // to carry out an instruction that is not mechanical
    };

    Reason reason = Reason::composing;

    bool operator==(const Needed&) const = default;
};

/// One or two sentences for the user. Pure; any thread.
std::string message(Needed needed, Language language);

}  // namespace dorix::service
