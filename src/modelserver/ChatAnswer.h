#pragma once

#include "platform/LanguageModel.h"

#include <optional>
#include <string>
#include <string_view>

/// What servers of language models answer, which keep to what they were asked for more or less. Pure; any
/// thread; any bytes.
namespace dorix {

/// What a model wrote.
struct ChatText {
    std::string text;
    bool isCut = false;  // it had more to write than it may

    bool operator==(const ChatText&) const = default;
};

/// The text that the model wrote: from an answer as a whole, or, where a server sends it piece by piece
/// though nobody asked for that, from its events. Nothing where it is neither.
std::optional<ChatText> chatText(std::string_view body);

/// What a model wrote, without what it thought aloud before; nothing where it did not come to an end with
/// that. Part of `text`.
std::optional<std::string_view> withoutThought(std::string_view text);

/// The fields in what a model wrote: of the first object that has all of them as texts, whatever stands
/// around it; nothing where there is none.
std::optional<GeneratedContent> contentIn(std::string_view text, const GenerationSchema& schema);

}  // namespace dorix
