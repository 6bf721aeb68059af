#include "memory/embedding/Tokenizer.h"

#include "base/text/Text.h"

#include <array>
#include <exception>
#include <optional>
#include <stdexcept>
#include <utility>

namespace dorix {

namespace {

/// Takes the vocabulary away as it is read: as a tree of values its half a million rows would need a hundred
/// times what they hold.
class VocabularyReader {
 public:
    explicit VocabularyReader(UnigramModel::Vocabulary& vocabulary) : vocabulary_(vocabulary) {}

    bool operator()(int depth, Json::parse_event_t event, const Json& value) {
        if (event == Json::parse_event_t::key && depth >= 1 && depth <= 2)
            path_.at(static_cast<std::size_t>(depth) - 1) = value;
        const bool isRow = event == Json::parse_event_t::array_end && depth == 3;
        if (!isRow || path_ != std::array<std::string, 2>{"model", "vocab"}) return true;
        if (value.size() != 2) throw std::runtime_error("a piece without a score");
        vocabulary_.add(value.at(0).get_ref<const std::string&>(), value.at(1).get<double>());
        return false;
    }

 private:
    UnigramModel::Vocabulary& vocabulary_;
    std::array<std::string, 2> path_;
};

UnigramModel modelIn(const Json& json, UnigramModel::Vocabulary vocabulary) {
    if (json.at("type") != "Unigram") throw std::runtime_error("no Unigram model");
    std::optional<std::uint64_t> unknown;
    if (json.contains("unk_id") && !json.at("unk_id").is_null())
        unknown = json.at("unk_id").get<std::uint64_t>();
    const auto fallback =
        json.value("byte_fallback", false) ? UnigramModel::ByteFallback::yes : UnigramModel::ByteFallback::no;
    auto model = UnigramModel::make(std::move(vocabulary), unknown, fallback);
    if (!model) throw std::runtime_error(model.error());
    return *std::move(model);
}

/// Others are words that would have to be found in the text before it is normalised.
void checkAddedTokens(const Json& json) {
    if (!json.contains("added_tokens")) return;
    for (const auto& token : json.at("added_tokens")) {
        const std::string content = token.at("content");
        const bool isSpecial = token.value("special", false) || content == "[UNK]" || content == "[PAD]";
        if (!isSpecial) throw std::runtime_error("an added token: " + content);
    }
}

}  // namespace

std::expected<Tokenizer, std::string> Tokenizer::parse(std::string_view text) {
    try {
        UnigramModel::Vocabulary vocabulary;
        const auto json = Json::parse(text, VocabularyReader(vocabulary));
        checkAddedTokens(json);
        // Not copied: how deep the tree is, is up to the file.
        static const Json none;
        const auto found = json.find("normalizer");
        auto normalizer = TextNormalizer::parse(found == json.end() ? none : *found);
        if (!normalizer) return std::unexpected(normalizer.error());
        return Tokenizer(modelIn(json.at("model"), std::move(vocabulary)), *std::move(normalizer),
                         metaspaceIn(json.at("pre_tokenizer")));
    } catch (const std::exception& error) {
        return std::unexpected(error.what());
    }
}

Tokenizer::Tokenizer(UnigramModel model, TextNormalizer normalizer, Metaspace metaspace)
    : model_(std::move(model)), normalizer_(std::move(normalizer)), metaspace_(std::move(metaspace)) {}

Tokenizer::Metaspace Tokenizer::metaspaceIn(const Json& preTokenizer) {
    const std::string type = preTokenizer.at("type");
    if (type == "Sequence") return metaspaceInSequence(preTokenizer.at("pretokenizers"));
    if (type != "Metaspace") throw std::runtime_error("an unknown pre-tokenizer: " + type);
    Metaspace metaspace{.mark = preTokenizer.at("replacement"), .splits = preTokenizer.value("split", true)};
    // The earlier form of the same is "add_prefix_space".
    const auto scheme = preTokenizer.value("prepend_scheme", "always");
    if (metaspace.mark.empty() || (scheme != "always" && scheme != "first" && scheme != "never"))
        throw std::runtime_error("an unknown way to mark blanks: " + scheme);
    metaspace.isPrepended = scheme != "never" && preTokenizer.value("add_prefix_space", true);
    return metaspace;
}

Tokenizer::Metaspace Tokenizer::metaspaceInSequence(const Json& steps) {
    const bool isKnown =
        steps.is_array() && !steps.empty() && steps.size() <= 2 && steps.back().at("type") == "Metaspace";
    if (!isKnown) throw std::runtime_error("an unknown sequence of pre-tokenizers");
    auto metaspace = metaspaceIn(steps.back());
    if (steps.size() == 1) return metaspace;
    if (steps.front().at("type") != "WhitespaceSplit" ||
        steps.back().value("prepend_scheme", "always") == "first")
        throw std::runtime_error("an unknown sequence of pre-tokenizers");
    metaspace.splitsAtWhiteSpace = true;
    return metaspace;
}

std::vector<std::uint32_t> Tokenizer::tokens(std::string text) const {
    text = normalizer_.normalised(std::move(text));
    std::vector<std::uint32_t> tokens;
    if (!metaspace_.splitsAtWhiteSpace) {
        cut(text, tokens);
    } else {
        for (const auto word : text::words(text)) cut(word, tokens);
    }
    return tokens;
}

void Tokenizer::cut(std::string_view part, std::vector<std::uint32_t>& tokens) const {
    if (part.empty()) return;
    const auto& mark = metaspace_.mark;
    auto marked = text::replaceAll(part, " ", mark);
    if (metaspace_.isPrepended && !marked.starts_with(mark)) marked.insert(0, mark);
    if (!metaspace_.splits) return model_.cut(marked, tokens);
    for (std::size_t begin = 0; begin < marked.size();) {
        const auto end = std::min(marked.find(mark, begin + 1), marked.size());
        model_.cut(std::string_view(marked).substr(begin, end - begin), tokens);
        begin = end;
    }
}

}  // namespace dorix
