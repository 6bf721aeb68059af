#pragma once

#include "reading/Messages.h"

namespace dorix::reader {

/// Has a document or a picture read by a process that is made for it, whatever becomes of that. Waits for it:
/// 30 seconds, or 120 where it has only what others leave.
ReadAnswer readInProcess(const ReadOrder& order);
ReadAnswer readInProcess(const PictureOrder& order);

}  // namespace dorix::reader
