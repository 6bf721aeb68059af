#pragma once

#include "assistant/AnswerCard.h"
#include "assistant/AnswerEngines.h"
#include "assistant/Assistant.h"
#include "localdata/HistoryItem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace dorix {

/// The card of a question that has just been asked. Any thread.
AnswerCard cardFor(const Assistant::Request& request);

/// What the history keeps of an answered question. The duration is in seconds. Any thread.
HistoryItem rowFor(const Assistant::Request& request, const AnswerEngines::Answer& answer, double duration);

/// A duration as the history keeps it. Pure; any thread.
std::int64_t wholeMilliseconds(double seconds);

/// What an answer rests on, each title once. Links are opened as such, files by their paths; what is neither
/// is a label only. Pure; any thread.
std::vector<AnswerSource> sourcesOf(const std::vector<MemoryHit>& hits);

/// The first few of the documents, each once. Pure; any thread.
std::vector<AnswerSource> sourcesOf(const std::vector<std::string>& documents);

}  // namespace dorix
