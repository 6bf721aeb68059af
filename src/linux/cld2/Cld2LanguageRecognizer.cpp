#include "linux/cld2/Cld2LanguageRecognizer.h"

#include <cld2/public/compact_lang_det.h>
#include <cld2/public/encodings.h>

#include <array>
#include <cstddef>

namespace dorix {

namespace {

constexpr double unsure = 0.5;                  // what is left of the confidence in an unreliable result
constexpr std::size_t longest = 1024UZ * 1024;  // bytes that are looked at

/// Some have had another code since.
std::string codeOf(CLD2::Language language) {
    std::string code = CLD2::LanguageCode(language);
    if (code == "iw") return "he";
    if (code == "no") return "nb";
    return code;
}

}  // namespace

std::optional<LanguageHypothesis> Cld2LanguageRecognizer::dominantLanguage(std::string_view text) const {
    const std::string sample(text.substr(0, longest));
    const CLD2::CLDHints noHints{nullptr, nullptr, CLD2::UNKNOWN_ENCODING, CLD2::UNKNOWN_LANGUAGE};
    std::array<CLD2::Language, 3> languages{};
    std::array<int, 3> percents{};
    std::array<double, 3> scores{};
    int letters = 0;
    int validBytes = 0;
    bool isReliable = false;
    CLD2::ExtDetectLanguageSummaryCheckUTF8(
        sample.data(), static_cast<int>(sample.size()), /*is_plain_text=*/true, &noHints, 0, languages.data(),
        percents.data(), scores.data(), nullptr, &letters, &isReliable, &validBytes);
    if (languages[0] == CLD2::UNKNOWN_LANGUAGE) return std::nullopt;
    return LanguageHypothesis{codeOf(languages[0]), percents[0] / 100.0 * (isReliable ? 1 : unsure)};
}

}  // namespace dorix
