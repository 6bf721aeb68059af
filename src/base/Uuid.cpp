#include "base/Uuid.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <random>

namespace dorix {

std::string makeUuid() {
    thread_local std::random_device device;
    std::array<std::uint32_t, 4> words{};
    for (auto& word : words) word = device();
    words[1] = (words[1] & 0xFFFF0FFFU) | 0x00004000U;  // version 4
    words[2] = (words[2] & 0x3FFFFFFFU) | 0x80000000U;  // the RFC's variant
    std::array<char, 37> text{};
    std::snprintf(text.data(), text.size(), "%08X-%04X-%04X-%04X-%04X%08X", words[0], words[1] >> 16,
                  words[1] & 0xFFFF, words[2] >> 16, words[2] & 0xFFFF, words[3]);
    return text.data();
}

}  // namespace dorix
