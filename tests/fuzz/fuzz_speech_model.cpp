// A model's record may come from anybody. Whatever it holds, it is read without a fault; what is taken stays
// in its folder, and is the same when it is written and read again.
#include "speech/models/SpeechModel.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace dorix;
    const auto model = parseSpeechModel({reinterpret_cast<const char*>(data), size});
    if (!model) return 0;
    for (const auto& [role, path] : model->files) {
        const auto inside = model->fileFor(role).lexically_normal();
        if (inside.empty() || inside.is_absolute() || *inside.begin() == "..") std::abort();
    }
    const auto again = parseSpeechModel(speechModelText(*model));
    if (!again || *again != *model) std::abort();
    return 0;
}
