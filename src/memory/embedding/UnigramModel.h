#pragma once

#include "memory/embedding/PieceTrie.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// A vocabulary of pieces, each with the logarithm of how likely it is, that cuts a text into the pieces
/// which are the likeliest together (Kudo, "Subword Regularization", ACL 2018). Which of several that are
/// equally likely, and what a character costs that no piece has, is as in the library of "tokenizer.json"
/// (huggingface/ tokenizers). Any thread.
class UnigramModel {
 public:
    /// The pieces as they are read, numbered from 0.
    struct Vocabulary {
        std::string text;  // of all
        std::vector<std::uint32_t> starts;
        std::vector<double> scores;

        /// Throws std::length_error where that is too much.
        void add(std::string_view piece, double score);
    };
    enum class ByteFallback { no, yes };

    /// Or why that is no model, in English. `unknown` is the number of the piece that stands for all others.
    static std::expected<UnigramModel, std::string> make(Vocabulary vocabulary,
                                                         std::optional<std::uint64_t> unknown,
                                                         ByteFallback fallback);

    std::size_t size() const { return scores_.size(); }

    /// Adds the numbers of the pieces of a text; what is in none adds nothing, or, with byte fallback, the
    /// pieces of its bytes.
    void cut(std::string_view text, std::vector<std::uint32_t>& pieces) const;

 private:
    struct Step;

    UnigramModel(const Vocabulary& vocabulary, std::uint32_t unknown, ByteFallback fallback);

    std::vector<Step> bestSteps(std::string_view text) const;
    void addUnknown(std::string_view unknown, std::vector<std::uint32_t>& pieces) const;

    PieceTrie trie_;
    std::vector<double> scores_;
    double unknownScore_ = 0;
    std::uint32_t unknown_ = PieceTrie::none;
    ByteFallback fallback_;
};

}  // namespace dorix
