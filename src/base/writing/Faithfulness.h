#pragma once

#include <string_view>

namespace dorix {

/// How much of the vocabulary of `produced` was dictated, from 0 to 1: of its words of four letters and more,
/// greetings and closings aside, the share whose first five letters begin a word of `dictated`. A cheap guard
/// against invented text; it says nothing about meaning. Pure; any thread.
double faithfulnessScore(std::string_view produced, std::string_view dictated);

}  // namespace dorix
