#pragma once

#include <string>

namespace dorix {

/// The text with the English names of days and months capitalised, which other languages do not have. "may"
/// and "march" only where they stand in a date. Pure, any thread.
std::string withEnglishDates(std::string text);

}  // namespace dorix
