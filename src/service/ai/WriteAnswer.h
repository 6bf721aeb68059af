#pragma once

#include "base/Json.h"

#include <string>
#include <string_view>

namespace dorix::service {

/// What became of a dictation. The names are those of the wire.
struct WriteAnswer {
    static constexpr std::string_view write = "escribir";
    static constexpr std::string_view ask = "preguntar";  // a question: it is answered, not written

    std::string accion{write};
    std::string titulo;  // may be empty
    std::string texto;

    bool operator==(const WriteAnswer&) const = default;
};

/// The body of the answer. Pure; any thread.
Json toJson(const WriteAnswer& answer);

}  // namespace dorix::service
