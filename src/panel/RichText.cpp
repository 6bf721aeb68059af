#include "base/text/Url.h"
#include "panel/AnswerBlocks.h"

#include <md4c.h>

#include <utility>

namespace dorix {

namespace {

// The block parser of the library would take the beginning of a line for a mark of its own: it gets one
// line, which begins and, where the text's lines end, goes on with a space that means nothing to it.
constexpr char lineEnd = '\v';

std::string_view textOf(const MD_ATTRIBUTE& attribute) { return {attribute.text, attribute.size}; }

/// Writes what the library reads. The callbacks are its own.
class RichTextWriter {
 public:
    std::string write(std::string_view text) {
        std::string line(1, lineEnd);
        line += text;
        for (char& c : line) {
            if (c == '\n') c = lineEnd;
        }
        MD_PARSER parser{};
        parser.flags = MD_FLAG_NOHTML | MD_FLAG_PERMISSIVEURLAUTOLINKS | MD_FLAG_NOINDENTEDCODEBLOCKS;
        parser.enter_block = parser.leave_block = [](MD_BLOCKTYPE, void*, void*) { return 0; };
        parser.enter_span = [](MD_SPANTYPE type, void* detail, void* self) {
            return static_cast<RichTextWriter*>(self)->enter(type, detail);
        };
        parser.leave_span = [](MD_SPANTYPE type, void* detail, void* self) {
            return static_cast<RichTextWriter*>(self)->leave(type, detail);
        };
        parser.text = [](MD_TEXTTYPE type, const MD_CHAR* read, MD_SIZE size, void* self) {
            return static_cast<RichTextWriter*>(self)->take(type, {read, size});
        };
        if (md_parse(line.data(), static_cast<MD_SIZE>(line.size()), &parser, this) != 0)
            return escaped(text);
        return std::move(out_);
    }

 private:
    int enter(MD_SPANTYPE type, void* detail) {
        if (const auto url = webAddress(type, detail); !url.empty()) {
            out_ += "<a href=\"" + escaped(url) + "\">";
        } else {
            out_ += tag(type, "<");
        }
        return 0;
    }

    int leave(MD_SPANTYPE type, void* detail) {
        const auto url = addressOf(type, detail);
        if (isWebAddress(url)) {
            out_ += "</a>";
        } else if (!url.empty()) {
            out_ += " (" + escaped(url) + ")";
        } else {
            out_ += tag(type, "</");
        }
        return 0;
    }

    /// A picture is not fetched; it is a link to where it is.
    static std::string_view addressOf(MD_SPANTYPE type, void* detail) {
        if (type == MD_SPAN_A) return textOf(static_cast<MD_SPAN_A_DETAIL*>(detail)->href);
        if (type == MD_SPAN_IMG) return textOf(static_cast<MD_SPAN_IMG_DETAIL*>(detail)->src);
        return {};
    }

    static std::string_view webAddress(MD_SPANTYPE type, void* detail) {
        const auto url = addressOf(type, detail);
        return isWebAddress(url) ? url : std::string_view();
    }

    static std::string tag(MD_SPANTYPE type, const char* opening) {
        switch (type) {
            case MD_SPAN_STRONG:
                return std::string(opening) + "b>";
            case MD_SPAN_EM:
                return std::string(opening) + "i>";
            case MD_SPAN_CODE:
                return std::string(opening) + "code>";
            default:
                return "";
        }
    }

    int take(MD_TEXTTYPE type, std::string_view text) {
        if (isFirst_ && text.starts_with(lineEnd)) text.remove_prefix(1);
        isFirst_ = false;
        std::string written = type == MD_TEXT_ENTITY ? std::string(text) : escaped(text);
        for (char& c : written) {
            if (c == lineEnd) c = '\n';
        }
        out_ += written;
        return 0;
    }

    std::string out_;
    bool isFirst_ = true;
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

std::string richText(std::string_view blockText) { return RichTextWriter().write(blockText); }

}  // namespace dorix
