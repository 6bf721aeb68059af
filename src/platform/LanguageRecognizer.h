#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// The language that a text is likely to be in.
struct LanguageHypothesis {
    std::string code;       // BCP 47, "es"
    double confidence = 0;  // from 0 to 1

    bool operator==(const LanguageHypothesis&) const = default;
};

/// Tells the language of a text.
class LanguageRecognizer {
 public:
    virtual ~LanguageRecognizer() = default;

    /// The dominant one; none where the text gives no hint. Any thread; computes for a moment on a page of
    /// text.
    virtual std::optional<LanguageHypothesis> dominantLanguage(std::string_view text) const = 0;
};

/// Where nothing can tell.
class UnavailableLanguageRecognizer final : public LanguageRecognizer {
 public:
    std::optional<LanguageHypothesis> dominantLanguage(std::string_view) const override {
        return std::nullopt;
    }
};

}  // namespace dorix
