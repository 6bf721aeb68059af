#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What of a question may stand in a file's name: folded words of three characters and more that are not of
/// the kind that questions are made of. Any thread.
std::vector<std::string> fileNameTokens(std::string_view query);

/// How many of the tokens a name must have.
std::size_t requiredTokens(std::size_t tokens);

/// How many of the tokens stand in a name, which is folded for it.
std::size_t tokensIn(std::string_view name, std::span<const std::string> tokens);

/// Of paths of files, the four that fit best, best first: those with the most tokens in their names, and of
/// these those with the fewest characters. What lies in hidden folders, in "Library" or in applications is
/// left out.
std::vector<std::string> bestFileNames(std::span<const std::string> paths,
                                       std::span<const std::string> tokens);

}  // namespace dorix
