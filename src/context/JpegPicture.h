#pragma once

#include "platform/ScreenContent.h"

#include <string>

namespace dorix {

/// The picture as a JPEG; `quality` is from 0 to 1. Empty when it cannot be made. Any thread; computes for as
/// long as the picture is large.
std::string jpegOf(const ScreenImage& image, double quality);

}  // namespace dorix
