#include "memory/embedding/TextNormalizer.h"

#include "base/text/Base64.h"
#include "base/text/Text.h"
#include "memory/embedding/CharacterMap.h"

#include <exception>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

constexpr int deepestSequence = 8;
// What no honest model needs: a text of a thousand characters would become one of gigabytes.
constexpr std::size_t mostSteps = 256;
constexpr std::size_t longestReplacement = 16;          // bytes
constexpr std::size_t longestText = 4UZ * 1024 * 1024;  // bytes

/// With each run of white space replaced.
std::string withWhiteSpace(std::string_view text, std::string_view replacement) {
    std::string result;
    std::size_t end = 0;  // of what has been taken
    for (const auto word : text::words(text)) {
        const auto begin = static_cast<std::size_t>(word.data() - text.data());
        if (begin > end) result += replacement;
        result += word;
        end = begin + word.size();
    }
    if (end < text.size()) result += replacement;
    return result;
}

/// With each run of two blanks and more replaced.
std::string withBlanks(std::string_view text, std::string_view replacement) {
    std::string result;
    while (!text.empty()) {
        const auto run = std::min(text.find("  "), text.size());
        result += text.substr(0, run);
        text.remove_prefix(run);
        if (!text.empty()) result += replacement;
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    }
    return result;
}

}  // namespace

std::expected<TextNormalizer, std::string> TextNormalizer::parse(const Json& normalizer) {
    try {
        TextNormalizer made;
        if (!normalizer.is_null()) made.add(normalizer, 0);
        return made;
    } catch (const std::exception& error) {
        return std::unexpected(error.what());
    }
}

void TextNormalizer::add(const Json& normalizer, int depth) {
    if (steps_.size() == mostSteps) throw std::runtime_error("too many normalizers");
    const std::string type = normalizer.at("type");
    if (type == "Sequence" && depth < deepestSequence) {
        for (const auto& step : normalizer.at("normalizers")) add(step, depth + 1);
    } else if (type == "Precompiled") {
        steps_.push_back(mapping(normalizer));
    } else if (type == "Replace") {
        steps_.push_back(replacing(normalizer));
    } else if (type == "Strip") {
        steps_.push_back(stripping(normalizer));
    } else {
        throw std::runtime_error("an unknown normalizer: " + type);
    }
}

TextNormalizer::Step TextNormalizer::mapping(const Json& precompiled) {
    const auto bytes = text::fromBase64(precompiled.at("precompiled_charsmap").get<std::string>());
    auto map = CharacterMap::parse(bytes.value_or(""));
    if (!map) throw std::runtime_error(map.error());
    return [map = *std::move(map)](const std::string& text) { return map.normalised(text); };
}

TextNormalizer::Step TextNormalizer::replacing(const Json& replace) {
    std::string to = replace.at("content");
    if (to.size() > longestReplacement) throw std::runtime_error("a long replacement: " + to);
    const auto& pattern = replace.at("pattern");
    if (pattern.contains("String")) {
        std::string from = pattern.at("String");
        if (from.empty()) throw std::runtime_error("nothing to replace");
        return [from = std::move(from), to = std::move(to)](const std::string& text) {
            return text::replaceAll(text, from, to);
        };
    }
    const std::string expression = pattern.at("Regex");
    if (expression == R"(\s+)")
        return [to = std::move(to)](const std::string& text) { return withWhiteSpace(text, to); };
    if (expression == " {2,}")
        return [to = std::move(to)](const std::string& text) { return withBlanks(text, to); };
    throw std::runtime_error("an unknown pattern: " + expression);
}

TextNormalizer::Step TextNormalizer::stripping(const Json& strip) {
    const bool left = strip.at("strip_left");
    const bool right = strip.at("strip_right");
    return [left, right](const std::string& text) -> std::string {
        const auto inside = text::trim(text);
        if (inside.empty()) return left || right ? "" : text;
        const auto begin = left ? static_cast<std::size_t>(inside.data() - text.data()) : 0;
        const auto end =
            right ? static_cast<std::size_t>(inside.data() + inside.size() - text.data()) : text.size();
        return text.substr(begin, end - begin);
    };
}

std::string TextNormalizer::normalised(std::string text) const {
    for (const auto& step : steps_) {
        text = step(text);
        if (text.size() > longestText) return {};
    }
    return text;
}

}  // namespace dorix
