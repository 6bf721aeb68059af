#include "memory/indexing/Filters.h"

#include "base/text/Text.h"

#include <algorithm>
#include <array>

namespace dorix {

namespace {

constexpr std::array<std::string_view, 12> indexable{"pdf", "docx", "doc",      "rtf", "rtfd", "odt",
                                                     "txt", "md",   "markdown", "csv", "json", "text"};

constexpr std::array<std::string_view, 9> skipped{
    "node_modules", ".git", "Library", "build", "DerivedData", "Pods", ".Trash", "venv", "__pycache__"};

template <typename Set>
bool contains(const Set& set, std::string_view text) {
    return std::ranges::find(set, text) != set.end();
}

}  // namespace

bool isIndexable(std::string_view extension) { return contains(indexable, text::lowercase(extension)); }

bool isSkipped(std::string_view name) { return contains(skipped, name); }

}  // namespace dorix
