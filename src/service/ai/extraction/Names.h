#pragma once

#include "service/ai/extraction/Passages.h"
#include "service/ai/extraction/Terms.h"

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace dorix::service {

/// The names in the material: words with a capital that no sentence begins with.
class Names {
 public:
    Names() = default;
    explicit Names(const std::vector<Passage>& passages);

    /// Whether a sentence holds one, also as its first word.
    bool areIn(std::string_view sentence) const;

 private:
    std::unordered_set<std::string, Hash, std::equal_to<>> known_;
};

}  // namespace dorix::service
