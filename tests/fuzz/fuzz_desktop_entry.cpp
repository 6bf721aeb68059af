#include "linux/apps/DesktopEntry.h"
#include "linux/x11/SelectionContents.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

// What files of other programs and the clipboards of other applications bring: desktop entries, target names,
// texts in either encoding.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto entry = dorix::parseDesktopEntry(input, {"es_ES", "es"});
    if (entry && entry->name.empty()) std::abort();

    const auto name = dorix::parsePasteboardType(input);
    if (dorix::parsePasteboardType(dorix::pasteboardType(name)) != name) std::abort();

    const auto latin1 = dorix::latin1FromUtf8(input);
    if (dorix::latin1FromUtf8(dorix::utf8FromLatin1(input)) != input) std::abort();
    if (latin1 && latin1->size() > input.size()) std::abort();
    return 0;
}
