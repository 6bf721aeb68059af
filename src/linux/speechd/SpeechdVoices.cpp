#include "linux/speechd/SpeechdVoices.h"

#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace dorix {

namespace {

using Row = std::pair<std::string_view, std::string_view>;

/// Where modules name a language alone they mean the country that it comes from.
constexpr std::array homes{Row{"es", "es-ES"}, Row{"en", "en-GB"}, Row{"fr", "fr-FR"},  Row{"it", "it-IT"},
                           Row{"de", "de-DE"}, Row{"pt", "pt-PT"}, Row{"ca", "ca-ES"},  Row{"nl", "nl-NL"},
                           Row{"nb", "nb-NO"}, Row{"ja", "ja-JP"}, Row{"cmn", "zh-CN"}, Row{"yue", "zh-HK"}};

std::string upper(std::string region) {
    for (char& letter : region) {
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    }
    return region;
}

/// "es_es", "en-US-NYC" as BCP 47 has them: the region, of two letters, in capitals.
std::string languageTag(std::string_view language) {
    const auto lower = text::lowercase(text::replaceAll(language, "_", "-"));
    const auto* const home = std::ranges::find(homes, lower, &Row::first);
    if (home != homes.end()) return std::string(home->second);
    const auto parts = text::split(lower, '-');
    std::string tag(parts.front());
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const bool isRegion = i == 1 && parts[i].size() == 2;
        tag += '-';
        tag += isRegion ? upper(std::string(parts[i])) : std::string(parts[i]);
    }
    return tag;
}

}  // namespace

std::vector<SpeechSynthesisVoice> voicesOf(const std::string& module, const std::vector<std::string>& lines) {
    std::vector<SpeechSynthesisVoice> voices;
    for (const auto& line : lines) {
        const auto fields = text::split(line, '\t');
        if (fields.size() < 2 || fields[0].empty()) continue;
        const bool isVariant = fields.size() > 2 && fields[0].ends_with("+" + std::string(fields[2]));
        if (isVariant) continue;
        const std::string name(fields[0]);
        voices.push_back(
            {.name = name, .identifier = module + "/" + name, .language = languageTag(fields[1])});
    }
    return voices;
}

std::pair<std::string, std::string> moduleAndName(const std::string& identifier) {
    const auto slash = identifier.find('/');
    if (slash == std::string::npos) return {{}, identifier};
    return {identifier.substr(0, slash), identifier.substr(slash + 1)};
}

}  // namespace dorix
