#pragma once

#include "base/Json.h"

#include <expected>
#include <functional>
#include <string>
#include <vector>

namespace dorix {

/// What a tokenizer does to a text before it cuts it: the "normalizer" of a "tokenizer.json". Any thread.
class TextNormalizer {
 public:
    /// Or why it cannot be done as it stands there, in English: "Sequence", "Precompiled", "Replace" and
    /// "Strip" are known, and of regular expressions those for runs of blanks and of white space.
    static std::expected<TextNormalizer, std::string> parse(const Json& normalizer);

    /// Nothing where it would become some megabytes.
    std::string normalised(std::string text) const;

 private:
    using Step = std::function<std::string(const std::string&)>;

    void add(const Json& normalizer, int depth);
    static Step replacing(const Json& replace);
    static Step stripping(const Json& strip);
    static Step mapping(const Json& precompiled);

    std::vector<Step> steps_;
};

}  // namespace dorix
