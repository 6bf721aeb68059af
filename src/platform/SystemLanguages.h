#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// The languages that the user gave the system, read when the program starts.
struct SystemLanguages {
    /// Locale identifiers, the most wanted first ("es-ES", "en").
    std::vector<std::string> preferred;
    /// The language code of the locale for formats ("es"); none where the system does not say.
    std::optional<std::string> currentLanguageCode;
};

}  // namespace dorix
