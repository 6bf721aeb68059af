#pragma once

#include "service/ai/WordSet.h"

#include <span>
#include <string_view>

/// What is said in a meeting when something is decided or promised. Phrases are folded.
namespace dorix::service::words {

std::span<const std::string_view> decisionCues();
/// By which a speaker takes a task, ...
std::span<const std::string_view> promiseCues();
/// ... gives it to whom they speak to, ...
std::span<const std::string_view> requestCues();
/// ... to somebody who is named before or behind it, ...
std::span<const std::string_view> assignmentCues();
/// ... or says that it is to be done.
std::span<const std::string_view> dutyCues();
/// What these cues say besides, which is no task.
std::span<const std::string_view> idleCues();
/// What takes a cue behind it back.
const WordSet& cueNegations();

/// Words that lead to a time, or go on with one.
const WordSet& timeLeads();
const WordSet& timeFollowers();

}  // namespace dorix::service::words
