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
    std::string_view title;  // may be empty; of a selection the title of its window
    std::int64_t number = 0;
    std::string_view text;
};

/// What there is to quote from, in the order of its worth. They point into the request.
std::vector<Source> sourcesOf(const AskRequest& request);

/// A sentence or a line of a source, without white space at its ends.
struct Passage {
    enum class Role : std::uint8_t {
        sentence,
        heading,  // a line that says what those below it are about
        label,    // a few words that do so for what follows them in their line: "Third. Rent."
    };

    std::size_t source = 0;
    std::string_view text;
    bool beginsLine = false;
    Role role = Role::sentence;
};

/// The sentences and lines of a text, without white space at their ends. Linear in it.
std::vector<std::string_view> sentencesOf(std::string_view text);

/// Linear in the texts.
std::vector<Passage> passagesOf(const std::vector<Source>& sources);

}  // namespace dorix::service
