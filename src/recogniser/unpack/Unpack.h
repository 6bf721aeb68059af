#pragma once

#include "recognition/UnpackOrder.h"

namespace dorix::recogniser {

/// Takes the ordered files out of an archive and puts them into the folder, which has none of them yet.
/// Everything else in the archive is passed over: other files, links, folders, paths that lead out. Throws
/// MessageError when one of them is not there, is there twice or is no regular file, when all together are
/// larger than ordered, and when the archive is none.
void unpack(const UnpackOrder& order);

}  // namespace dorix::recogniser
