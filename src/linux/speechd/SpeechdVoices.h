#pragma once

#include "platform/SpeechSynthesizer.h"

#include <string>
#include <utility>
#include <vector>

/// The voices of speech-dispatcher as ours. Pure functions, any thread.
namespace dorix {

/// Of what the server lists for one of its modules ("Spanish (Spain)", "es", "none", with tabs between them).
/// A module's variants of a voice, which only disguise it, are left out. The server tells no quality.
std::vector<SpeechSynthesisVoice> voicesOf(const std::string& module, const std::vector<std::string>& lines);

/// The module and the module's name of a voice, from its identifier.
std::pair<std::string, std::string> moduleAndName(const std::string& identifier);

}  // namespace dorix
