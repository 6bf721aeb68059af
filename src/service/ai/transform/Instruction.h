#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace dorix::service {

/// What can be done to lines of text without understanding them, in the order in which it is done.
enum class Operation : std::uint8_t {
    trimStart,
    trimEnd,
    trim,       // at both ends
    squeeze,    // at both ends, and to one blank between words
    dropEmpty,  // lines
    unmark,     // without bullets and numbers
    deduplicate,
    sort,
    reverse,  // the other way round, also of what was sorted
    upper,
    lower,
    bullets,
    number,
    join,
};

/// What an instruction in Spanish or English asks for, each once and in their order. Empty when it holds a
/// word whose part in it is not known: half an instruction is worse than none. Pure; any thread.
std::vector<Operation> operationsOf(std::string_view instruction);

}  // namespace dorix::service
