#include "reader/program/Extraction.h"

#include "reader/archive/ZipParts.h"
#include "reader/program/DocumentFile.h"
#include "reader/text/OfficeText.h"
#include "reader/text/PlainText.h"
#include "reader/text/RtfText.h"

#include <linux/ioprio.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace dorix::reader {

namespace {

/// What reads a format that we do not read ourselves.
struct Reader {
    Format format;
    Program program;
};

const std::vector<Reader>& readers() {
    static const std::vector<Reader> all{
        {.format = Format::pdf,
         .program = {.name = "pdftotext",
                     .arguments = {"-q", "-enc", "UTF-8", "-eol", "unix", "-nopgbrk", "-", "-"},
                     .data = {"/usr/share/poppler"}}},
        // Lines as long as their paragraphs.
        {.format = Format::compound,
         .program = {.name = "catdoc",
                     .arguments = {"-w", "-s", "cp1252", "-d", "utf-8"},
                     .data = {"/usr/share/catdoc"}}},
    };
    return all;
}

/// Only with what others leave of processor and disk.
void stepBack() {
    const sched_param none{};
    ::sched_setscheduler(0, SCHED_IDLE, &none);
    ::syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, 0, IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0));
}

std::string wholeInput() {
    std::string bytes;
    std::string block(1UZ << 18U, '\0');
    while (true) {
        const auto count = ::read(STDIN_FILENO, block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw NotNow(std::generic_category().message(errno));
        if (count == 0) return bytes;
        bytes.append(block, 0, static_cast<std::size_t>(count));
    }
}

bool isOfficePart(std::string_view path) {
    return path == "content.xml" || path == "word/footnotes.xml" || path == "word/endnotes.xml" ||
           (path.starts_with("word/document") && path.ends_with(".xml"));
}

/// A text document of either kind; nothing when the archive is something else.
std::optional<std::string> officeText(std::size_t most) {
    struct stat status{};
    ::fstat(STDIN_FILENO, &status);
    auto parts = zipParts(STDIN_FILENO, static_cast<std::uint64_t>(status.st_size), isOfficePart);
    if (const auto content = parts.find("content.xml"); content != parts.end())
        return odtText(std::move(content->second), most);
    std::optional<std::string> text;
    // In the order of their names the text comes first, but for the notes at its end.
    std::string notes;
    for (auto& [path, xml] : parts) {
        const bool isNotes = !path.starts_with("word/document");
        auto part = docxText(std::move(xml), most);
        if (isNotes) {
            notes += part.value_or("");
        } else if (!text) {
            text = std::move(part);
        }
    }
    if (text) *text += notes;
    return text;
}

std::optional<std::string> ownText(Format format, std::size_t most) {
    switch (format) {
        case Format::zip:
            return officeText(most);
        case Format::rtf:
            return rtfText(wholeInput(), most);
        case Format::plain:
            return plainText(wholeInput());
        default:
            return std::nullopt;
    }
}

void readDocument(const ReadOrder& order, Complaints complaints) {
    if (order.isIdle) stepBack();
    const auto document = openDocument(order);
    if (!document) end(ReadingEnd::noText);
    const auto format = formatOf(document, order.kind);
    keepOnly(document.get());
    for (const auto& reader : readers()) {
        if (reader.format == format) become(reader.program, complaints);
    }
    shutIn({}, complaints);
    const auto text = ownText(format, mostBytes(order.limit));
    if (!text) end(ReadingEnd::noText);
    writeAll(STDOUT_FILENO, *text);
}

}  // namespace

void extract(const ReadOrder& order, int output, Complaints complaints) {
    readInto(output, [&] { readDocument(order, complaints); });
}

}  // namespace dorix::reader
