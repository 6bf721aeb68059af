// A model comes from the web, and a text from anybody. Whatever the files hold they are read without a fault,
// and whatever a text holds gives tokens of the model. What stands before the first NUL is taken for a
// tokenizer, the rest for a text, and all of it for a table of vectors.
#include "memory/embedding/EmbeddingTable.h"
#include "memory/embedding/Tokenizer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace dorix;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto end = std::min(bytes.find('\0'), bytes.size());
    if (const auto tokenizer = Tokenizer::parse(bytes.substr(0, end))) {
        for (const auto token : tokenizer->tokens(std::string(bytes.substr(end)))) {
            if (token >= tokenizer->size()) std::abort();
        }
    }
    if (const auto table = EmbeddingTable::in(bytes)) {
        std::vector<double> sums(table->dimension());
        for (std::size_t row = 0; row < table->rows(); ++row) table->addRow(row, sums);
    }
    return 0;
}
