#pragma once

#include <span>
#include <string_view>

namespace dorix::service::words {

/// Words of general use that stand for the same in a question and its answer, in Spanish and English: a row
/// for each meaning, its words folded and between blanks. A word may have several meanings; one form of each
/// is enough, since words are compared by what their forms have in common.
std::span<const std::string_view> meanings();

}  // namespace dorix::service::words
