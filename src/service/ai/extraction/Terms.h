#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// The words of a folded text: runs of letters and digits. They point into the text.
std::vector<std::string_view> foldedWords(std::string_view folded);

/// What a folded word has in common with its other forms, in Spanish or English, and with the words that mean
/// the same in a question and its answer. Empty for words that say nothing of what a text is about. Pure; any
/// thread.
std::string termOf(std::string_view foldedWord);

}  // namespace dorix::service
