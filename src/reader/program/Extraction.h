#pragma once

#include "reader/program/JailedChild.h"
#include "reading/Messages.h"

namespace dorix::reader {

/// Reads one document in a process that is made for that: opens it, shuts itself in, and writes its text to
/// `output`, as it is in the document. Standard error is not the document's.
[[noreturn]] void extract(const ReadOrder& order, int output, Complaints complaints);

}  // namespace dorix::reader
