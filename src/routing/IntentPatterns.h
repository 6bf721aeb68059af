#pragma once

#include <span>
#include <string_view>

/// The regular expressions that tell what an utterance wants, in ICU's syntax, each a search without flags in
/// the normalised text. Several rows are tried in their order. Constants; any thread.
namespace dorix::intentpatterns {

std::span<const std::string_view> teach();
/// Run on the normalised text with a blank at either end.
std::span<const std::string_view> search();
std::span<const std::string_view> action();
std::span<const std::string_view> meetingStart();
std::span<const std::string_view> meetingStop();
std::span<const std::string_view> teachDone();

/// In folded or lower-case names and paths.
std::span<const std::string_view> secretName();
/// In text as it is; the pattern carries its own flag.
std::span<const std::string_view> secretContent();

}  // namespace dorix::intentpatterns
