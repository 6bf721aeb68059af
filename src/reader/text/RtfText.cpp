#include "reader/text/RtfText.h"

#include "reader/text/CodePage.h"
#include "reader/text/RtfTokens.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace dorix::reader {

namespace {

constexpr std::size_t deepestGroup = 100'000;
constexpr int westernCodePage = 1252;

/// What a group holds.
enum class Destination : std::uint8_t {
    text,
    note,      // follows the text
    fonts,     // the table of fonts
    twoForms,  // a text for old programs, and in a group of its own the one for the others
    leftOut,
};

using Destinations = std::pair<std::string_view, Destination>;

// Of groups that are marked as to be left out by who does not know them, only those that have to be known.
constexpr std::array markedDestinations{
    Destinations{"footnote", Destination::note},
    Destinations{"shpinst", Destination::text},
    Destinations{"ud", Destination::text},
};

constexpr std::array destinations{
    Destinations{"colortbl", Destination::leftOut},   Destinations{"comment", Destination::leftOut},
    Destinations{"filetbl", Destination::leftOut},    Destinations{"fldinst", Destination::leftOut},
    Destinations{"fonttbl", Destination::fonts},      Destinations{"footer", Destination::leftOut},
    Destinations{"footerf", Destination::leftOut},    Destinations{"footerl", Destination::leftOut},
    Destinations{"footerr", Destination::leftOut},    Destinations{"footnote", Destination::note},
    Destinations{"ftncn", Destination::leftOut},      Destinations{"ftnsep", Destination::leftOut},
    Destinations{"ftnsepc", Destination::leftOut},    Destinations{"header", Destination::leftOut},
    Destinations{"headerf", Destination::leftOut},    Destinations{"headerl", Destination::leftOut},
    Destinations{"headerr", Destination::leftOut},    Destinations{"info", Destination::leftOut},
    Destinations{"listtext", Destination::leftOut},   Destinations{"nonesttables", Destination::leftOut},
    Destinations{"nonshppict", Destination::leftOut}, Destinations{"objdata", Destination::leftOut},
    Destinations{"pict", Destination::leftOut},       Destinations{"pntext", Destination::leftOut},
    Destinations{"pntxta", Destination::leftOut},     Destinations{"pntxtb", Destination::leftOut},
    Destinations{"revtbl", Destination::leftOut},     Destinations{"rxe", Destination::leftOut},
    Destinations{"shprslt", Destination::leftOut},    Destinations{"sp", Destination::leftOut},
    Destinations{"stylesheet", Destination::leftOut}, Destinations{"tc", Destination::leftOut},
    Destinations{"tcn", Destination::leftOut},        Destinations{"upr", Destination::twoForms},
    Destinations{"xe", Destination::leftOut},
};

// Words and symbols that stand for a character.
constexpr std::array<std::pair<std::string_view, std::string_view>, 22> characters{{
    {"\n", "\n"},      {"\r", "\n"},       {"_", "\u2011"},    {"bullet", "•"},  {"cell", "\n"},
    {"emdash", "—"},   {"emspace", " "},   {"endash", "–"},    {"enspace", " "}, {"ldblquote", "“"},
    {"line", "\n"},    {"lquote", "‘"},    {"nestcell", "\n"}, {"page", "\n"},   {"par", "\n"},
    {"qmspace", " "},  {"rdblquote", "”"}, {"rquote", "’"},    {"sect", "\n"},   {"tab", "\t"},
    {"zwj", "\u200D"}, {"~", "\u00A0"},
}};

// The code pages of \fcharset; others have the document's.
constexpr std::array<std::pair<int, int>, 20> codePagesOfCharsets{{
    {0, westernCodePage}, {2, westernCodePage}, {77, 10000}, {128, 932},  {129, 949},
    {130, 1361},          {134, 936},           {136, 950},  {161, 1253}, {162, 1254},
    {163, 1258},          {177, 1255},          {178, 1256}, {186, 1257}, {204, 1251},
    {222, 874},           {238, 1250},          {254, 437},  {255, 850},  {256, westernCodePage},
}};

template <typename Table, typename Key>
auto found(const Table& table, const Key& key) {
    using Value = decltype(table.front().second);
    const auto* const entry = std::ranges::find(table, key, [](const auto& row) { return row.first; });
    return entry == table.end() ? std::nullopt : std::optional<Value>(entry->second);
}

/// What holds until the end of a group.
struct Group {
    Destination destination = Destination::text;
    bool isDeleted = false;
    bool isOfNote = false;  // within a note, at any depth
    int font = -1;
    int fallbackLength = 1;  // how many characters follow a Unicode one for programs that do not know it
};

class RtfReader {
 public:
    RtfReader(std::string_view rtf, std::size_t mostBytes) : tokens_(rtf), mostBytes_(mostBytes) {}

    /// Nothing when it is nested too deeply.
    std::optional<std::string> read() {
        while (const auto token = tokens_.next()) {
            if (groups_.size() > deepestGroup) return std::nullopt;
            take(*token);
            if (text_.size() + notes_.size() > mostBytes_) break;
        }
        flush();
        return std::move(text_) + notes_;
    }

 private:
    void take(const RtfToken& token) {
        if (token.kind != RtfToken::Kind::byte && token.kind != RtfToken::Kind::text) flush();
        switch (token.kind) {
            case RtfToken::Kind::open:
                return openGroup();
            case RtfToken::Kind::close:
                return closeGroup();
            case RtfToken::Kind::word:
                return takeWord(token.text, token.number);
            case RtfToken::Kind::symbol:
                return takeSymbol(token.text);
            case RtfToken::Kind::byte:
                return takeByte(static_cast<char>(*token.number));
            case RtfToken::Kind::text:
                return takeText(token.text);
            case RtfToken::Kind::binary:
                skipped_ = std::max(0, skipped_ - 1);
                return;
        }
    }

    void openGroup() {
        groups_.push_back(group_);
        isMarked_ = false;
        skipped_ = 0;
    }

    void closeGroup() {
        isMarked_ = false;
        skipped_ = 0;
        if (groups_.empty()) return;
        const bool endsNote = group_.isOfNote && !groups_.back().isOfNote;
        if (endsNote && !notes_.ends_with('\n')) notes_ += '\n';
        group_ = groups_.back();
        groups_.pop_back();
    }

    void takeWord(std::string_view word, std::optional<int> number) {
        const bool isMarked = std::exchange(isMarked_, false);
        if (skipped_ > 0 && word != "u") {
            --skipped_;
            return;
        }
        if (isMarked) {
            enter(found(markedDestinations, word).value_or(Destination::leftOut));
        } else if (const auto destination = found(destinations, word)) {
            enter(*destination);
        } else if (const auto character = found(characters, word)) {
            emit(*character);
        } else {
            takeProperty(word, number);
        }
    }

    void enter(Destination destination) {
        const bool isWanted =
            group_.destination == Destination::text || group_.destination == Destination::note ||
            (group_.destination == Destination::twoForms && destination == Destination::text);
        if (!isWanted) return;
        group_.destination = destination;
        group_.isOfNote = group_.isOfNote || destination == Destination::note;
    }

    void takeProperty(std::string_view word, std::optional<int> number) {
        if (word == "u" && number) return takeUnicode(*number);
        if (word == "uc") group_.fallbackLength = std::clamp(number.value_or(1), 0, 1000);
        if (word == "f") group_.font = number.value_or(-1);
        if (word == "deff") defaultFont_ = group_.font = number.value_or(-1);
        if (word == "fcharset") setCharset(number.value_or(0));
        if (word == "cpg" && group_.destination == Destination::fonts)
            codePageOfFont_[group_.font] = number.value_or(westernCodePage);
        if (word == "deleted") group_.isDeleted = number.value_or(1) != 0;
        if (word == "plain") {
            group_.isDeleted = false;
            group_.font = defaultFont_;
        }
        if (word == "mac") documentsCodePage_ = 10000;
        if (word == "pc") documentsCodePage_ = 437;
        if (word == "pca") documentsCodePage_ = 850;
        if (word == "ansicpg") documentsCodePage_ = number.value_or(westernCodePage);
    }

    void setCharset(int charset) {
        const auto codePage = found(codePagesOfCharsets, charset);
        if (group_.destination == Destination::fonts && codePage) codePageOfFont_[group_.font] = *codePage;
    }

    void takeSymbol(std::string_view symbol) {
        if (symbol == "*") {
            isMarked_ = true;
        } else if (skipped_ > 0) {
            --skipped_;
        } else if (const auto character = found(characters, symbol)) {
            emit(*character);
        } else if (symbol == "{" || symbol == "}" || symbol == "\\") {
            takeByte(symbol.front());
        }
    }

    void takeByte(char byte) {
        isMarked_ = false;
        if (skipped_ > 0) {
            --skipped_;
        } else if (isShown()) {
            bytes_ += byte;
        }
    }

    void takeText(std::string_view text) {
        isMarked_ = false;
        const auto count = std::min(text.size(), static_cast<std::size_t>(skipped_));
        skipped_ -= static_cast<int>(count);
        if (isShown()) bytes_ += text.substr(count);
    }

    /// A unit of UTF-16, as a signed number.
    void takeUnicode(int number) {
        skipped_ = group_.fallbackLength;
        const auto unit = static_cast<std::uint16_t>(number);
        if (U16_IS_LEAD(unit)) {
            lead_ = unit;
            return;
        }
        const auto lead = std::exchange(lead_, 0);
        UChar32 character = unit;
        if (U16_IS_TRAIL(unit)) character = lead == 0 ? 0xFFFD : U16_GET_SUPPLEMENTARY(lead, unit);
        std::array<char, U8_MAX_LENGTH> utf8{};
        std::size_t size = 0;
        U8_APPEND_UNSAFE(utf8.data(), size, character);
        emit({utf8.data(), size});
    }

    bool isShown() const {
        return (group_.destination == Destination::text || group_.destination == Destination::note) &&
               !group_.isDeleted;
    }

    void emit(std::string_view utf8) {
        if (isShown()) (group_.isOfNote ? notes_ : text_) += utf8;
    }

    /// Characters of several bytes may come in pieces, so they are put together first.
    void flush() {
        if (bytes_.empty()) return;
        const auto font = codePageOfFont_.find(group_.font);
        const int number = font == codePageOfFont_.end() ? documentsCodePage_ : font->second;
        const auto codePage = codePages_.try_emplace(number, number).first;
        emit(codePage->second.text(std::exchange(bytes_, {})));
    }

    RtfTokens tokens_;
    const std::size_t mostBytes_;
    Group group_;
    std::vector<Group> groups_;  // those around it
    bool isMarked_ = false;      // the next word is a destination that may be left out
    int skipped_ = 0;            // characters still to be left out, as they were told in Unicode
    std::uint16_t lead_ = 0;     // of a pair
    std::string bytes_;          // not yet turned into text
    std::string text_;
    std::string notes_;
    int documentsCodePage_ = westernCodePage;
    int defaultFont_ = -1;
    std::map<int, int> codePageOfFont_;
    std::map<int, CodePage> codePages_;  // those in use
};

}  // namespace

std::optional<std::string> rtfText(std::string_view rtf, std::size_t mostBytes) {
    if (!rtf.starts_with("{\\rtf")) return std::nullopt;
    return RtfReader(rtf, mostBytes).read();
}

}  // namespace dorix::reader
