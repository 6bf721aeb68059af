#pragma once

#include "platform/LanguageRecognizer.h"

namespace dorix {

/// Tells languages by CLD2, which knows the sequences of letters of 80 of them. Its confidence is the share
/// of the text that is in the language, and half of that where the text is too short or too mixed for it to
/// be sure.
class Cld2LanguageRecognizer final : public LanguageRecognizer {
 public:
    /// Nothing of a text that is not UTF-8.
    std::optional<LanguageHypothesis> dominantLanguage(std::string_view text) const override;
};

}  // namespace dorix
