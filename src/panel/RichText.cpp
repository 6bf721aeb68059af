#include "panel/AnswerBlocks.h"

#include <algorithm>

namespace dorix {

namespace {

bool isSpace(char c) { return c == ' ' || c == '\n' || c == '\t'; }
bool isWord(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
           (byte >= 'A' && byte <= 'Z');
}

bool isWebAddress(std::string_view url) { return url.starts_with("https://") || url.starts_with("http://"); }

/// Reads the marks within a line, from left to right. A block is short, so that looking ahead for the end of
/// a mark costs little however the text is made.
class RichTextWriter {
 public:
    explicit RichTextWriter(std::string_view text) : text_(text) {}

    std::string write(int depth = 0) {
        while (at_ < text_.size()) {
            if (!takeEscape() && !takeCode() && !takeLink() && !takeAddress() && !takeEmphasis(depth)) {
                out_ += escaped(text_.substr(at_++, 1));
            }
        }
        return std::move(out_);
    }

 private:
    std::string_view rest() const { return text_.substr(at_); }
    char before() const { return at_ == 0 ? ' ' : text_[at_ - 1]; }

    bool takeEscape() {
        if (rest().size() < 2 || rest().front() != '\\') return false;
        if (!std::string_view("\\`*_[]#-+.!>|").contains(rest()[1])) return false;
        out_ += escaped(rest().substr(1, 1));
        at_ += 2;
        return true;
    }

    bool takeCode() {
        if (rest().front() != '`') return false;
        const auto marks = std::min(rest().find_first_not_of('`'), rest().size());
        const auto end = rest().find(rest().substr(0, marks), marks);
        if (end == std::string_view::npos) return false;
        out_ += "<code>" + escaped(rest().substr(marks, end - marks)) + "</code>";
        at_ += end + marks;
        return true;
    }

    bool takeLink() {
        if (rest().front() != '[') return false;
        const auto middle = rest().find("](");
        const auto end = rest().find(')', middle);
        if (middle == std::string_view::npos || end == std::string_view::npos) return false;
        const auto label = rest().substr(1, middle - 1);
        const auto url = rest().substr(middle + 2, end - middle - 2);
        if (!isWebAddress(url) || label.empty()) return false;
        link(url, label);
        at_ += end + 1;
        return true;
    }

    bool takeAddress() {
        if (!isWebAddress(rest()) || isWord(before())) return false;
        auto url = rest().substr(0, rest().find_first_of(" \t\n<>\"`|"));
        while (!url.empty() && std::string_view(".,;:!?)*_]'").contains(url.back())) url.remove_suffix(1);
        if (url.size() <= std::string_view("https://").size()) return false;
        link(url, url);
        at_ += url.size();
        return true;
    }

    void link(std::string_view url, std::string_view label) {
        out_ += "<a href=\"" + escaped(url) + "\">" + escaped(label) + "</a>";
    }

    bool takeEmphasis(int depth) {
        constexpr int deepest = 3;
        const char mark = rest().front();
        if ((mark != '*' && mark != '_') || depth >= deepest) return false;
        const std::size_t width = rest().size() > 1 && rest()[1] == mark ? 2 : 1;
        // Within a word an underscore is a letter.
        if (mark == '_' && isWord(before())) return false;
        const auto end = emphasisEnd(mark, width);
        if (end == std::string_view::npos) return false;
        const std::string_view tag = width == 2 ? "b" : "i";
        const auto inner = RichTextWriter(rest().substr(width, end - width)).write(depth + 1);
        out_.append("<").append(tag).append(">").append(inner).append("</").append(tag).append(">");
        at_ += end + width;
        return true;
    }

    std::size_t emphasisEnd(char mark, std::size_t width) const {
        const std::string marks(width, mark);
        if (rest().size() <= 2 * width || isSpace(rest()[width])) return std::string_view::npos;
        for (auto end = rest().find(marks, width + 1); end != std::string_view::npos;
             end = rest().find(marks, end + 1)) {
            const char behind = end + width < rest().size() ? rest()[end + width] : ' ';
            const bool isLonger = width == 1 && (behind == mark || rest()[end - 1] == mark);
            const bool isInWord = mark == '_' && isWord(behind);
            if (!isSpace(rest()[end - 1]) && !isLonger && !isInWord) return end;
        }
        return std::string_view::npos;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::string out_;
};

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

std::string richText(std::string_view blockText) { return RichTextWriter(blockText).write(); }

}  // namespace dorix
