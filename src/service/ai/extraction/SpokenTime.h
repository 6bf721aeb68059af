#pragma once

#include <string_view>

namespace dorix::service {

/// The first time that a sentence names, with the words that lead to it: "para el viernes", "by 3 May". Empty
/// when it names none. It points into the sentence. Linear; pure.
std::string_view timeIn(std::string_view sentence);

}  // namespace dorix::service
