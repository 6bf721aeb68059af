#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// The table by which SentencePiece normalises text, "precompiled_charsmap" in its models: a trie in the
/// double array of Darts-clone (https://github.com/s-yata/darts-clone), whose values are places in the texts
/// that follow it, each of which ends with a NUL. Any thread.
class CharacterMap {
 public:
    /// Of the table's bytes; or why they are none, in English. Whatever they hold, nothing outside is read.
    static std::expected<CharacterMap, std::string> parse(std::string_view bytes);

    /// The text as the library of "tokenizer.json" (huggingface/tokenizers) has it normalised: characters of
    /// fewer than six bytes as a whole, by the shortest entry that they begin with, others code point by code
    /// point; what has no entry stays.
    std::string normalised(std::string_view text) const;

 private:
    std::optional<std::string_view> replacement(std::string_view key) const;

    std::vector<std::uint32_t> units_;
    std::string texts_;
};

}  // namespace dorix
