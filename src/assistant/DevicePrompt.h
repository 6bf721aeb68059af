#pragma once

#include "assistant/Assistant.h"

#include <optional>
#include <string>
#include <string_view>

/// What the model of this computer is told, in Spanish whatever the app language. It has little room, so the
/// material is cut hard, and it does not see pictures. Pure; any thread.
namespace dorix {

/// How to answer, and where the user is.
std::string answerInstructions(const Assistant::Request& request);

/// The material, and the question after it. `screenText` is what can be read in the picture; none where there
/// is no picture.
std::string answerPrompt(const Assistant::Request& request, const std::optional<std::string>& screenText);

/// How to rewrite a selected text, and the text with what is to be done with it.
std::string_view rewriteSelectionInstructions();
std::string rewriteSelectionPrompt(std::string_view instruction, std::string_view selected);
/// Whether nothing of that prompt is cut off.
bool hasRoomToRewrite(std::string_view instruction, std::string_view selected);

}  // namespace dorix
