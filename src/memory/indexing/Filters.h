#pragma once

#include <string_view>

namespace dorix {

/// Whether text can be read out of files with this extension, in any case and without its dot. Any thread.
bool isIndexable(std::string_view extension);

/// Whether what has this name, a file or a folder, is nothing that its user wrote. Any thread.
bool isSkipped(std::string_view name);

}  // namespace dorix
