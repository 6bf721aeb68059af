#pragma once

#include "base/Json.h"
#include "base/text/Base64.h"
#include "platform/FileMapper.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

inline void writeFile(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

inline std::string bytesOfFile(const std::filesystem::path& file) {
    std::stringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

/// Reads files in place of mapping them.
class ReadingMapper final : public FileMapper {
 public:
    std::unique_ptr<MappedFile> map(const std::filesystem::path& file) override {
        auto bytes = bytesOfFile(file);
        return bytes.empty() ? nullptr : std::make_unique<Bytes>(std::move(bytes));
    }

 private:
    struct Bytes final : MappedFile {
        explicit Bytes(std::string read) : held(std::move(read)) {}
        std::string_view bytes() const override { return held; }
        const std::string held;
    };
};

/// A character map of three entries, placed in the double array by hand: "A" becomes "a", "Ｂ" (full width)
/// "b", and an acute accent goes. The root leads to 256 ^ byte.
inline std::string characterMapBytes() {
    std::vector<std::uint32_t> units(512);
    const auto leaf = [&](std::uint32_t at, std::uint32_t byte, std::uint32_t jump, std::uint32_t text) {
        units[at] = (jump << 10U) | 0x100U | byte;
        units[at ^ jump] = 0x8000'0000U | text;
    };
    units[0] = 256U << 10U;
    leaf(256U ^ 0x41U, 0x41, 1, 0);
    units[256U ^ 0xCCU] = (16U << 10U) | 0xCCU;  // U+0301 is CC 81
    leaf(256U ^ 0xCCU ^ 16U ^ 0x81U, 0x81, 2, 4);
    units[256U ^ 0xEFU] = (32U << 10U) | 0xEFU;  // U+FF22 is EF BC A2
    units[256U ^ 0xEFU ^ 32U ^ 0xBCU] = (64U << 10U) | 0xBCU;
    leaf(256U ^ 0xEFU ^ 32U ^ 0xBCU ^ 64U ^ 0xA2U, 0xA2, 4, 2);
    std::string bytes(sizeof(std::uint32_t) * (1 + units.size()), '\0');
    const auto size = static_cast<std::uint32_t>(units.size() * sizeof(std::uint32_t));
    std::memcpy(bytes.data(), &size, sizeof(size));
    std::memcpy(bytes.data() + sizeof(size), units.data(), size);
    return bytes + std::string("a\0b\0\0", 5);
}

/// A "tokenizer.json" of the shape that model2vec writes for multilingual models.
inline Json tokenizerJson(const std::vector<std::pair<std::string, double>>& pieces) {
    auto normalizers =
        Json::array({{{"type", "Precompiled"}, {"precompiled_charsmap", text::base64(characterMapBytes())}},
                     {{"type", "Replace"}, {"pattern", {{"Regex", " {2,}"}}}, {"content", " "}}});
    normalizers = Json::array({{{"type", "Sequence"}, {"normalizers", normalizers}}});
    for (const auto* mark : {".", ","}) {
        normalizers.push_back({{"type", "Replace"},
                               {"pattern", {{"String", mark}}},
                               {"content", std::string(" ") + mark + " "}});
    }
    normalizers.push_back({{"type", "Replace"}, {"pattern", {{"Regex", "\\s+"}}}, {"content", " "}});
    normalizers.push_back({{"type", "Strip"}, {"strip_left", true}, {"strip_right", true}});
    auto vocabulary = Json::array({Json::array({"[PAD]", 0.0}), Json::array({"[UNK]", 0.0})});
    for (const auto& [piece, score] : pieces) vocabulary.push_back(Json::array({piece, score}));
    return {{"added_tokens", Json::array({{{"id", 1}, {"content", "[UNK]"}, {"special", true}}})},
            {"normalizer", {{"type", "Sequence"}, {"normalizers", normalizers}}},
            {"pre_tokenizer",
             {{"type", "Metaspace"}, {"replacement", "▁"}, {"prepend_scheme", "always"}, {"split", false}}},
            {"model", {{"type", "Unigram"}, {"unk_id", 1}, {"vocab", vocabulary}}}};
}

/// A "model.safetensors" with the header and the numbers.
inline std::string tensorBytes(const std::string& header, const std::vector<float>& numbers) {
    const std::uint64_t length = header.size();
    std::string bytes(sizeof(length), '\0');
    std::memcpy(bytes.data(), &length, sizeof(length));
    bytes += header;
    return bytes.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(float));
}

inline std::string tensorHeader(std::size_t rows, std::size_t columns) {
    return Json{{"embeddings",
                 {{"dtype", "F32"},
                  {"shape", {rows, columns}},
                  {"data_offsets", {0, rows * columns * sizeof(float)}}}}}
        .dump();
}

}  // namespace dorix
