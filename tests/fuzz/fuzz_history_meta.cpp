#include "localdata/HistoryRows.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace dorix;

/// Whatever a row of the history holds is understood or passed over, and what was understood is kept as it
/// is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto meta = decodeMeta({reinterpret_cast<const char*>(data), size});
    const auto text = encodeMeta(meta);
    if (!text || decodeMeta(*text) != meta) __builtin_trap();
    return 0;
}
