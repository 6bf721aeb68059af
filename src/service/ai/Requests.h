#pragma once

#include "service/ai/Language.h"
#include "service/ai/Picture.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The bodies of the calls that write and answer. All texts are UTF-8, counted in characters as a reader
/// counts them. Everything here is pure and may run on any thread.
namespace dorix::service {

namespace bounds {

inline constexpr std::size_t name = 200;  // of an application, a person, a document
inline constexpr std::size_t windowTitle = 500;
inline constexpr std::size_t dictation = 200'000;
inline constexpr std::size_t question = 20'000;
inline constexpr std::size_t instruction = 20'000;
inline constexpr std::size_t styleNotes = 600;
inline constexpr std::size_t styleExample = 800;
inline constexpr std::size_t styleExamples = 3;
inline constexpr std::size_t askedSelection = 120'000;
inline constexpr std::size_t rewrittenSelection = 60'000;
inline constexpr std::size_t document = 400'000;
inline constexpr std::size_t transcript = 400'000;
inline constexpr std::size_t recap = 20'000;
inline constexpr std::size_t meetingTitle = 200;
inline constexpr std::size_t memoryHits = 12;
inline constexpr std::size_t memoryTitle = 300;
inline constexpr std::size_t memoryText = 4'000;
inline constexpr std::size_t pictureBase64 = 12 * 1024 * 1024;  // bytes

/// What no body of these calls exceeds, in bytes.
inline constexpr std::size_t body = 20 * 1024 * 1024;

}  // namespace bounds

/// Why a body is not answered.
struct RequestError {
    enum class Problem : std::uint8_t {
        notJson,    // no JSON object in UTF-8, or one nested too deep
        missing,    // `field` has to be there
        wrongType,  // `field` is of another type
        unknown,    // `field` has a value that is none of those known
        notPicture,
        tooLong,  // `field` is longer than is taken, and cutting it would lose what the user said
    };

    Problem problem = Problem::notJson;
    std::string field;  // as it is called in the body; empty for the body as a whole

    bool operator==(const RequestError&) const = default;
};

/// One sentence for whoever called.
std::string message(const RequestError& error, Language language);

template <typename T>
using Parsed = std::expected<T, RequestError>;

/// A dictation to write.
struct WriteRequest {
    std::string transcript;
    std::string appName;
    std::string tone;  // the name of one of the tones of base/writing/Tones.h
    bool allowAsk = false;
    std::string windowTitle;    // may be empty
    std::string signatureName;  // may be empty
    std::optional<Picture> screenshot;
    std::optional<bool> editableFocus;
    std::string styleNotes;                  // may be empty
    std::vector<std::string> styleExamples;  // texts that the user wrote in the same tone

    bool operator==(const WriteRequest&) const = default;
};

/// A question, and all that may answer it.
struct AskRequest {
    struct Document {
        std::string name;
        std::string text;
        bool operator==(const Document&) const = default;
    };
    /// A passage of the user's documents.
    struct MemoryHit {
        std::int64_t n = 0;  // the number that the user sees it under
        std::string title;
        std::string date;  // year, month and day (ISO 8601); may be empty
        std::string text;
        bool operator==(const MemoryHit&) const = default;
    };

    std::string question;  // may be empty where something is selected or shown
    std::string appName;
    std::string windowTitle;  // may be empty
    std::optional<std::string> selection;
    std::optional<Picture> screenshot;
    std::optional<Document> document;
    std::string mode;  // empty, "meeting_summary", "meeting_live", or one that is not known
    std::optional<std::string> recap;
    std::optional<std::string> transcript;
    std::string meetingTitle;  // may be empty
    std::vector<MemoryHit> memory;

    bool operator==(const AskRequest&) const = default;
};

/// A selected text, and what is to become of it.
struct TransformRequest {
    std::string instruction;
    std::string selection;

    bool operator==(const TransformRequest&) const = default;
};

/// What tells of the circumstances is cut to its bound; what the user said, or will have replaced, is refused
/// when it is longer. Members that are not known are passed by.
Parsed<WriteRequest> parseWriteRequest(std::string_view body);
Parsed<AskRequest> parseAskRequest(std::string_view body);
Parsed<TransformRequest> parseTransformRequest(std::string_view body);

}  // namespace dorix::service
