#pragma once

#include <cstddef>
#include <span>

namespace dorix::recogniser {

/// The middle of the quietest third of a second that begins at `from` or later: where sound that is too long
/// is cut. The end where there is no such third. Sound as Engine takes it.
std::size_t quietestPoint(std::span<const float> samples, std::size_t from);

/// Whether there is nothing in it but what a quiet room or a microphone's own noise makes.
bool isSilent(std::span<const float> samples);

}  // namespace dorix::recogniser
