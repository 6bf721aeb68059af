#pragma once

#include "base/Json.h"
#include "memory/embedding/TextNormalizer.h"
#include "memory/embedding/UnigramModel.h"

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// Turns texts into the numbers of tokens, as a "tokenizer.json" (huggingface/tokenizers) of the kind
/// "Unigram" says. Special tokens are neither added nor looked for in a text, which is the user's; and what
/// no token has gives none, as in model2vec. Any thread.
class Tokenizer {
 public:
    /// Or why it cannot be followed to the letter, in English.
    static std::expected<Tokenizer, std::string> parse(std::string_view json);

    /// How many tokens there are.
    std::size_t size() const { return model_.size(); }

    std::vector<std::uint32_t> tokens(std::string text) const;

 private:
    /// The mark that stands for blanks, and goes before words.
    struct Metaspace {
        std::string mark;
        bool isPrepended = true;
        bool splits = true;
        bool splitsAtWhiteSpace = false;  // before anything is marked
    };

    Tokenizer(UnigramModel model, TextNormalizer normalizer, Metaspace metaspace);

    static Metaspace metaspaceIn(const Json& preTokenizer);
    static Metaspace metaspaceInSequence(const Json& steps);
    void cut(std::string_view part, std::vector<std::uint32_t>& tokens) const;

    UnigramModel model_;
    TextNormalizer normalizer_;
    Metaspace metaspace_;
};

}  // namespace dorix
