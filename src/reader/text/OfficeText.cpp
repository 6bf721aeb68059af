#include "reader/text/OfficeText.h"

#include <algorithm>
#include <array>
#include <pugixml.hpp>
#include <span>
#include <string_view>
#include <utility>

namespace dorix::reader {

namespace {

using Names = std::span<const std::string_view>;

bool isOneOf(std::string_view name, Names names) { return std::ranges::find(names, name) != names.end(); }

/// Goes through a tree as it is written, however deep: it keeps no stack but the tree itself.
template <typename Visitor>
void walk(pugi::xml_node root, Visitor& visitor) {
    auto node = root;
    bool mayEnter = true;
    while (!visitor.hasEnough()) {
        if (mayEnter && visitor.enter(node) && node.first_child()) {
            node = node.first_child();
            continue;
        }
        if (mayEnter) visitor.leave(node);
        if (node == root) return;
        const auto next = node.next_sibling();
        mayEnter = !next.empty();
        node = mayEnter ? next : node.parent();
        if (!mayEnter) visitor.leave(node);
    }
}

std::string_view localName(const pugi::xml_node& node) {
    const std::string_view name = node.name();
    return name.substr(name.find(':') + 1);
}

class DocxText {
 public:
    explicit DocxText(std::size_t mostBytes) : mostBytes_(mostBytes) {}

    /// Whether to go on with what the node holds.
    bool enter(const pugi::xml_node& node) {
        if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            if (localName(node.parent()) == "t") text_ += node.value();
            return false;
        }
        const auto name = localName(node);
        if (name == "tab" || name == "ptab") text_ += '\t';
        if (name == "br" || name == "cr") text_ += '\n';
        if (name == "noBreakHyphen") text_ += "\u2011";
        // It stands within a paragraph.
        if (name == "txbxContent") endLine();
        return !isOneOf(name, leftOut) && !isSeparator(node) && !isInPlaceOfAnother(node);
    }

    void leave(const pugi::xml_node& node) {
        if (localName(node) == "p") text_ += '\n';
    }

    bool hasEnough() const { return text_.size() > mostBytes_; }
    std::string take() { return std::move(text_); }

 private:
    // What was deleted or moved away, the phonetic form of a word, what fields are made of, and properties.
    static constexpr std::array<std::string_view, 12> leftOut{"del",   "moveFrom", "delText", "instrText",
                                                              "rt",    "pPr",      "rPr",     "sectPr",
                                                              "sdtPr", "tblPr",    "trPr",    "tcPr"};

    void endLine() {
        if (!text_.empty() && !text_.ends_with('\n')) text_ += '\n';
    }
    /// The line above notes, which is one of them.
    static bool isSeparator(const pugi::xml_node& node) {
        const std::string_view type = node.attribute("w:type").value();
        return type == "separator" || type == "continuationSeparator";
    }
    static bool isInPlaceOfAnother(const pugi::xml_node& node) {
        return localName(node) == "Fallback" && !node.previous_sibling().empty();
    }

    const std::size_t mostBytes_;
    std::string text_;
};

class OdtText {
 public:
    explicit OdtText(std::size_t mostBytes) : mostBytes_(mostBytes) {}

    bool enter(const pugi::xml_node& node) {
        if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            if (paragraphs_ > 0) addCollapsed(node.value());
            return false;
        }
        const std::string_view name = node.name();
        if (isOneOf(name, leftOut)) return false;
        if (isParagraph(name)) beginParagraph();
        if (name == "text:note-body") ++notes_;
        if (paragraphs_ == 0) return true;
        if (name == "text:tab") out() += '\t';
        if (name == "text:line-break") out() += '\n';
        if (name == "text:s") addBlanks(node.attribute("text:c").as_int(1));
        return true;
    }

    void leave(const pugi::xml_node& node) {
        const std::string_view name = node.name();
        // What is left out was not entered: nothing of it is counted.
        if (name == "text:note-body") --notes_;
        if (!isParagraph(name)) return;
        --paragraphs_;
        out() += '\n';
    }

    bool hasEnough() const { return text_.size() + notesText_.size() > mostBytes_; }
    std::string take() { return std::move(text_) + notesText_; }

 private:
    static constexpr std::array<std::string_view, 7> leftOut{
        "office:annotation", "text:tracked-changes", "text:note-citation", "text:ruby-text", "svg:title",
        "svg:desc",          "office:forms"};

    static bool isParagraph(std::string_view name) { return name == "text:p" || name == "text:h"; }

    std::string& out() { return notes_ > 0 ? notesText_ : text_; }

    /// Those of a text box begin within another.
    void beginParagraph() {
        ++paragraphs_;
        if (!out().empty() && !out().ends_with('\n')) out() += '\n';
    }

    /// White space counts as one blank, and at the beginning of a line as none.
    void addCollapsed(std::string_view text) {
        auto& to = out();
        for (const char c : text) {
            const bool isSpace = c == ' ' || c == '\t' || c == '\n' || c == '\r';
            if (!isSpace) {
                to += c;
            } else if (!to.empty() && to.back() != ' ' && to.back() != '\n') {
                to += ' ';
            }
        }
    }

    void addBlanks(int count) {
        constexpr int most = 1000;
        out().append(static_cast<std::size_t>(std::clamp(count, 1, most)), ' ');
    }

    const std::size_t mostBytes_;
    int paragraphs_ = 0;  // around this node
    int notes_ = 0;
    std::string text_;
    std::string notesText_;
};

template <typename Visitor>
std::optional<std::string> textOf(std::string xml, std::size_t mostBytes) {
    pugi::xml_document document;
    constexpr unsigned options =
        pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol | pugi::parse_ws_pcdata;
    if (!document.load_buffer_inplace(xml.data(), xml.size(), options)) return std::nullopt;
    Visitor visitor(mostBytes);
    walk(document.document_element(), visitor);
    return visitor.take();
}

}  // namespace

std::optional<std::string> docxText(std::string xml, std::size_t mostBytes) {
    return textOf<DocxText>(std::move(xml), mostBytes);
}

std::optional<std::string> odtText(std::string xml, std::size_t mostBytes) {
    return textOf<OdtText>(std::move(xml), mostBytes);
}

}  // namespace dorix::reader
