#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// The words of all patterns and phrases of the intent rules, each once.
const std::vector<std::string>& intentVocabulary();

/// Makes utterances that the intent rules match, nearly match, or just do not. The same seed makes the same
/// ones.
class UtteranceGenerator {
 public:
    explicit UtteranceGenerator(std::uint32_t seed) : random_(seed) {}

    std::string next();

    /// A text of the rules' own words.
    std::string words(std::size_t count);

 private:
    std::string choice(std::string_view pattern, std::size_t& at);
    std::string sequence(std::string_view pattern, std::size_t& at);
    std::string single(std::string_view pattern, std::size_t& at);
    void mutate(std::string& text);

    bool happens(unsigned percent) { return random_() % 100 < percent; }
    template <typename Items>
    const auto& pick(const Items& items) {
        return items[random_() % items.size()];
    }

    std::mt19937 random_;
};

}  // namespace dorix
