#include "download/FileFetch.h"

#include "base/Sha256.h"
#include "base/async/Completion.h"
#include "base/async/Sleep.h"
#include "base/text/Text.h"
#include "download/InstallError.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace dorix {

namespace fs = std::filesystem;

/// The bytes that are in the file, as far as they have been seen. One thread at a time.
struct FileFetch::Part {
    Sha256 sum;
    std::uint64_t held = 0;
    std::uint64_t fromBefore = 0;  // of them, those that were there already
    bool isAnswered = false;       // by what may be the file

    void add(std::uint64_t at, std::string_view piece, std::uint64_t largest) {
        if (at == 0) {
            sum = Sha256();
            held = fromBefore = 0;
        }
        if (at != held) throw HttpError(HttpError::Kind::broken, "a piece is missing");
        if (piece.size() > largest - held) throw HttpError(HttpError::Kind::tooLarge, "longer than it is");
        sum.update(piece);
        held += piece.size();
    }
};

namespace {

constexpr std::size_t pieceSize = 256UZ * 1024;          // bytes read at once
constexpr std::size_t longestComplaint = 1024UZ * 1024;  // bytes of an answer that is no file

std::optional<std::uint64_t> numberIn(std::string_view digits) {
    const bool isNumber = !digits.empty() && digits.size() < 19 &&
                          std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
    return isNumber ? std::optional<std::uint64_t>(std::stoull(std::string(digits))) : std::nullopt;
}

/// How long the whole file is by what the answer says; none where it does not.
std::optional<std::uint64_t> wholeLength(const HttpHead& head) {
    if (head.status == 200) return numberIn(head.header("content-length").value_or(""));
    const auto range = head.header("content-range").value_or("");
    return numberIn(range.substr(std::min(range.rfind('/'), range.size() - 1) + 1));
}

/// A page that a hotel's network or a mirror shows in place of the file would cost what is there already.
bool mayBe(const RemoteFile& file, const HttpHead& head) {
    const bool isPage = text::lowercase(head.header("content-type").value_or("")).starts_with("text/html");
    return !isPage && wholeLength(head).value_or(file.bytes) == file.bytes;
}

bool isWorthTrying(int status) { return status >= 500 || status == 408 || status == 429; }

}  // namespace

Task<void> FileFetch::fetch(RemoteFile file, fs::path to, Progress progress) const {
    while (true) {
        const auto part = co_await complete(file, to, progress);
        if (part->sum.hex() == file.sha256) co_return;
        co_await discard(to);
        // What was there may have been damaged; what has just come was not.
        if (part->fromBefore == 0) throw InstallError(InstallError::Case::wrongContents);
    }
}

Task<std::shared_ptr<FileFetch::Part>> FileFetch::look(const RemoteFile& file, const fs::path& to) const {
    return runOn(disk_, [to, largest = file.bytes] {
        auto part = std::make_shared<Part>();
        std::error_code ignored;
        if (fs::file_size(to, ignored) > largest) fs::remove(to, ignored);
        std::ifstream stream(to, std::ios::binary);
        std::vector<char> piece(pieceSize);
        while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())) || stream.gcount() > 0) {
            part->add(part->held, {piece.data(), static_cast<std::size_t>(stream.gcount())}, largest);
        }
        part->fromBefore = part->held;
        return part;
    });
}

Task<std::shared_ptr<FileFetch::Part>> FileFetch::complete(RemoteFile file, fs::path to,
                                                           Progress progress) const {
    auto part = co_await look(file, to);
    int failures = 0;
    while (part->held < file.bytes) {
        progress(part->held);
        const auto before = part->held;
        std::optional<InstallError> failure;
        try {
            co_await transfer(file, to, part, progress);
        } catch (const InstallError& error) {
            failure = error;
        }
        if (part->held == file.bytes) break;
        if (failure && failure->kind() != InstallError::Case::unreachable) throw InstallError(*failure);
        failures = part->held > before ? 1 : failures + 1;
        if (failures >= patience_.attempts)
            throw failure.value_or(InstallError::of(HttpError(HttpError::Kind::broken, "it ended early")));
        co_await sleep(patience_.pause * (1 << (failures - 1)));
        if (!co_await isAsSeen(to, part->held)) part = co_await look(file, to);
    }
    co_return part;
}

Task<void> FileFetch::transfer(RemoteFile file, fs::path to, std::shared_ptr<Part> part,
                               Progress progress) const {
    part->isAnswered = false;
    HttpRequest request{.url = file.url,
                        .timeout = patience_.stall,
                        .redirects = HttpRequest::Redirects::follow,
                        .largestBody = longestComplaint};
    if (part->held > 0) request.range = HttpRange{.first = part->held};
    const HttpDownload download{
        .file = to,
        .accepts = [part, file](const HttpHead& head) { return part->isAnswered = mayBe(file, head); },
        .onPiece = [part, largest = file.bytes](std::uint64_t at,
                                                std::string_view piece) { part->add(at, piece, largest); },
        .onProgress = [&progress](std::uint64_t held, auto&&) { progress(held); }};
    std::optional<HttpError> error;
    int status = 0;
    try {
        status = (co_await http_.download(std::move(request), download)).status;
    } catch (const HttpError& thrown) {
        error = thrown;
    }
    if (error && error->kind() == HttpError::Kind::tooLarge) {
        if (!part->isAnswered) throw InstallError(InstallError::Case::notGiven, "200");
        co_await discard(to);
        throw InstallError(InstallError::Case::wrongContents);
    }
    if (error) throw InstallError::of(*error);
    if (part->isAnswered) co_return;
    if (isWorthTrying(status))
        throw InstallError(InstallError::Case::unreachable, "HTTP " + std::to_string(status));
    throw InstallError(InstallError::Case::notGiven, std::to_string(status));
}

/// Or the disk lacks some of it: then what is there is read again.
Task<bool> FileFetch::isAsSeen(const fs::path& to, std::uint64_t held) const {
    return runOn(disk_, [to, held] {
        std::error_code error;
        const auto size = fs::file_size(to, error);
        return error ? held == 0 : size == held;
    });
}

Task<void> FileFetch::discard(const fs::path& to) const {
    return runOn(disk_, [to] {
        std::error_code ignored;
        fs::remove(to, ignored);
    });
}

}  // namespace dorix
