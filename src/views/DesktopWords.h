#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace dorix {

/// A text of the interface, in either language, as this desktop says it: its names for the keys and for the
/// computer. The texts themselves know nothing of it; views apply it to what they are about to draw. Any
/// thread.
std::string desktopWords(std::string_view text);
/// The same, as the toolkit takes it.
QString shown(std::string_view text);

}  // namespace dorix
