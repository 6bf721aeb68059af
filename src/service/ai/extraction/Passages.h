#pragma once

#include "service/ai/Requests.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// A piece of the material that came with a question. The texts are those of the request.
struct Source {
    enum class Kind : std::uint8_t { document, memory, selection, transcript, recap };

    Kind kind = Kind::document;
    std::string_view title;  // may be empty
    std::int64_t number = 0;
    std::string_view text;
};

/// What there is to quote from, in the order of its worth. They point into the request.
std::vector<Source> sourcesOf(const AskRequest& request);

/// A sentence or a line of a source, without white space at its ends.
struct Passage {
    std::size_t source = 0;
    std::string_view text;
    bool beginsParagraph = false;
};

/// Linear in the texts.
std::vector<Passage> passagesOf(const std::vector<Source>& sources);

}  // namespace dorix::service
