#pragma once

#include "reader/program/JailedChild.h"
#include "reading/Messages.h"

#include <chrono>

namespace dorix::reader {

/// What a picture may take, also of the processor.
inline constexpr std::chrono::seconds picturePatience(30);

/// Reads a picture's text in a process that is made for that: shuts itself in, makes of the picture what a
/// recogniser takes, and becomes one, which writes the text to `output`. Standard error is not the picture's.
[[noreturn]] void recognise(const PictureOrder& order, int output, Complaints complaints);

}  // namespace dorix::reader
