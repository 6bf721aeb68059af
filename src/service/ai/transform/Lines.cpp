#include "service/ai/transform/Lines.h"

#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <unordered_set>

namespace dorix::service {

namespace {

constexpr auto bulletSigns = std::to_array<std::string_view>({"- ", "* ", "• ", "– ", "— ", "· "});
constexpr auto conjunctions = std::to_array<std::string_view>({" y ", " e ", " and ", " o ", " or "});

bool isEmpty(std::string_view line) { return text::trim(line).empty(); }

std::size_t indentOf(std::string_view line) {
    const auto start = line.find_first_not_of(" \t");
    return start == std::string_view::npos ? line.size() : start;
}

/// The bytes of a bullet or a number at the front: "- ", "3. ", "3) ".
std::size_t markOf(std::string_view line) {
    for (const auto sign : bulletSigns) {
        if (line.starts_with(sign)) return sign.size();
    }
    const auto digits = line.find_first_not_of("0123456789");
    const bool isNumber = digits != std::string_view::npos && digits > 0 && digits <= 3 &&
                          (line[digits] == '.' || line[digits] == ')') &&
                          line.substr(digits + 1).starts_with(' ');
    return isNumber ? digits + 2 : 0;
}

std::string unmarked(std::string_view line) {
    const auto indent = indentOf(line);
    const auto rest = line.substr(indent);
    return std::string(line.substr(0, indent)) + std::string(rest.substr(markOf(rest)));
}

/// What a dictionary goes by: "ñ" comes after all that begins with "n".
std::string sortKey(std::string_view line) {
    const auto item = unmarked(line);
    return text::fold(text::replaceAll(text::replaceAll(text::trim(item), "ñ", "n\x7F"), "Ñ", "n\x7F"));
}

std::vector<std::string> sentencesOf(std::string_view line) {
    std::vector<std::string> sentences;
    std::size_t start = 0;
    for (std::size_t at = 0; at + 2 < line.size(); ++at) {
        const bool isEnd = (line[at] == '.' || line[at] == '?' || line[at] == '!') && line[at + 1] == ' ';
        if (!isEnd || (line[at + 2] >= 'a' && line[at + 2] <= 'z')) continue;
        sentences.emplace_back(text::trim(line.substr(start, at + 1 - start)));
        start = at + 1;
    }
    sentences.emplace_back(text::trim(line.substr(start)));
    return sentences;
}

/// What commas and a last "y" or "and" separate.
std::vector<std::string> enumerated(std::string_view line) {
    const char separator = line.find(';') != std::string_view::npos ? ';' : ',';
    std::vector<std::string> items;
    for (const auto item : text::split(line, separator)) items.emplace_back(text::trim(item));
    if (items.size() < 2) return items;
    const std::string last = " " + items.back();
    for (const auto conjunction : conjunctions) {
        const auto at = last.rfind(conjunction);
        if (at == std::string::npos) continue;
        const std::string before(text::trim(last.substr(0, at)));
        items.pop_back();
        if (!before.empty()) items.push_back(before);
        items.emplace_back(text::trim(std::string_view(last).substr(at + conjunction.size())));
        break;
    }
    return items;
}

}  // namespace

Lines::Lines(std::string_view text) : ending_(text.find("\r\n") == std::string_view::npos ? "\n" : "\r\n") {
    for (auto line : text::split(text, '\n')) {
        if (line.ends_with('\r') && ending_.size() == 2) line.remove_suffix(1);
        lines_.emplace_back(line);
    }
    endsInOne_ = lines_.size() > 1 && lines_.back().empty();
    if (endsInOne_) lines_.pop_back();
}

bool Lines::splitItems() {
    if (std::ranges::count_if(lines_, [](const auto& line) { return !isEmpty(line); }) > 1) return true;
    const auto only = std::ranges::find_if(lines_, [](const auto& line) { return !isEmpty(line); });
    if (only == lines_.end()) return false;
    auto items = sentencesOf(text::trim(*only));
    if (items.size() < 2) items = enumerated(text::trim(*only));
    std::erase_if(items, [](const auto& item) { return item.empty(); });
    if (items.size() < 2) return false;
    lines_ = std::move(items);
    return true;
}

void Lines::dropEmpty() { std::erase_if(lines_, isEmpty); }

void Lines::unmark() { forEach(unmarked); }

void Lines::deduplicate() {
    std::unordered_set<std::string> seen;
    std::erase_if(lines_, [&](const auto& line) {
        const std::string key(text::trim(line));
        return !key.empty() && !seen.insert(key).second;
    });
}

void Lines::sort() {
    std::erase_if(lines_, [](const auto& line) { return isEmpty(line); });
    std::vector<std::pair<std::string, std::string>> keyed;
    for (auto& line : lines_) {
        auto key = sortKey(line);
        keyed.emplace_back(std::move(key), std::move(line));
    }
    std::ranges::sort(keyed);
    for (std::size_t i = 0; i < keyed.size(); ++i) lines_[i] = std::move(keyed[i].second);
}

void Lines::reverse() { std::ranges::reverse(lines_); }

void Lines::mark(Marks marks) {
    std::size_t number = 0;
    for (auto& line : lines_) {
        if (isEmpty(line)) continue;
        const auto plain = unmarked(line);
        const auto indent = indentOf(plain);
        const auto sign = marks == Marks::bullets ? std::string("- ") : std::to_string(++number) + ". ";
        line = plain.substr(0, indent) + sign + plain.substr(indent);
    }
}

void Lines::join() {
    std::vector<std::string_view> pieces;
    for (const auto& line : lines_) {
        if (!isEmpty(line)) pieces.push_back(text::trim(line));
    }
    lines_ = {text::join(pieces, " ")};
}

void Lines::forEach(const std::function<std::string(std::string_view)>& change) {
    for (auto& line : lines_) line = change(line);
}

std::string Lines::text() const {
    const std::vector<std::string_view> lines(lines_.begin(), lines_.end());
    std::string out;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) out += ending_;
        out += lines[i];
    }
    return endsInOne_ ? out + ending_ : out;
}

}  // namespace dorix::service
