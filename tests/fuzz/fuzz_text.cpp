#include "base/text/Text.h"
#include "base/writing/Faithfulness.h"
#include "writing/BasicPolisher.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace dorix;

namespace {

void require(bool holds) {
    if (!holds) __builtin_trap();
}

}  // namespace

/// Whatever the recogniser or a file gives: text is cut, folded and polished without a fault.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto length = text::length(input);
    require(text::prefix(input, length) == input);
    require(text::prefix(input, length / 2).size() <= input.size());
    require(text::trim(text::trim(input)) == text::trim(input));
    require(input.ends_with(text::lastCharacter(input)));
    require(text::fold(text::fold(input)) == text::fold(input));
    for (const auto word : text::words(input)) require(!word.empty());

    const auto polished = BasicPolisher().polished(input);
    require(!polished.title.empty());
    require(text::trim(polished.text) == polished.text);
    const double score = faithfulnessScore(polished.text, input);
    require(score >= 0 && score <= 1);
    return 0;
}
