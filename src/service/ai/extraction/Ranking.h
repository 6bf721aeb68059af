#pragma once

#include "service/ai/extraction/Passages.h"

#include <string_view>
#include <vector>

namespace dorix::service {

/// The passages that answer the question word for word, the best first; empty when none of them holds enough
/// of what it asks. Linear in the passages.
std::vector<std::size_t> bestPassages(std::string_view question, const std::vector<Source>& sources,
                                      const std::vector<Passage>& passages);

/// The passages that speak most of what all of them speak of, in their order.
std::vector<std::size_t> centralPassages(const std::vector<Passage>& passages, std::size_t most);

}  // namespace dorix::service
