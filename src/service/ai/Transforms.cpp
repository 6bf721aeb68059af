#include "service/ai/Transforms.h"

#include "base/text/Case.h"
#include "base/text/Text.h"
#include "service/ai/transform/Instruction.h"
#include "service/ai/transform/Lines.h"

#include <algorithm>

namespace dorix::service {

namespace {

std::string withoutStart(std::string_view line) {
    const auto words = text::trim(line);
    return std::string(words.empty() ? words : line.substr(line.find(words)));
}

std::string withoutEnd(std::string_view line) {
    const auto words = text::trim(line);
    return std::string(words.empty() ? words : line.substr(0, line.find(words) + words.size()));
}

void apply(Operation operation, Lines& lines) {
    switch (operation) {
        case Operation::trimStart:
            return lines.forEach(withoutStart);
        case Operation::trimEnd:
            return lines.forEach(withoutEnd);
        case Operation::trim:
            return lines.forEach([](auto line) { return std::string(text::trim(line)); });
        case Operation::squeeze:
            return lines.forEach([](auto line) { return text::join(text::words(line), " "); });
        case Operation::dropEmpty:
            return lines.dropEmpty();
        case Operation::unmark:
            return lines.unmark();
        case Operation::deduplicate:
            return lines.deduplicate();
        case Operation::sort:
            return lines.sort();
        case Operation::reverse:
            return lines.reverse();
        case Operation::upper:
            return lines.forEach(text::uppercase);
        case Operation::lower:
            return lines.forEach(text::lowercase);
        case Operation::bullets:
            return lines.mark(Lines::Marks::bullets);
        case Operation::number:
            return lines.mark(Lines::Marks::numbers);
        case Operation::join:
            return lines.join();
    }
}

bool isAboutItems(Operation operation) {
    return operation == Operation::bullets || operation == Operation::number || operation == Operation::sort;
}

}  // namespace

std::expected<std::string, Needed> transformByRules(const TransformRequest& request) {
    const auto operations = operationsOf(request.instruction);
    Lines lines(request.selection);
    const bool wantsItems = std::ranges::any_of(operations, isAboutItems);
    // One line is a list only when it names things one after the other.
    if (operations.empty() || (wantsItems && !lines.splitItems()))
        return std::unexpected(Needed{Needed::Reason::rewriting});
    for (const auto operation : operations) apply(operation, lines);
    return lines.text();
}

}  // namespace dorix::service
