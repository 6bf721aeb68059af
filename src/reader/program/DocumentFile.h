#pragma once

#include "base/Error.h"
#include "linux/loop/FileDescriptor.h"
#include "reading/Messages.h"

namespace dorix::reader {

/// What keeps a document from being read and may be over another time.
class NotNow : public MessageError {
 public:
    using MessageError::MessageError;
};

/// The order's document, for reading. It is a regular file below 25 000 000 bytes: nothing else is opened, so
/// that no pipe is waited for and no device set in motion. Links are not followed. None when there is no such
/// file; throws NotNow when its disk does not do its work. May hang with that disk.
FileDescriptor openDocument(const ReadOrder& order);

/// What its first bytes say that it is.
enum class Format { unknown, pdf, zip, compound, rtf, plain };

Format formatOf(const FileDescriptor& document, DocumentKind kind);

}  // namespace dorix::reader
