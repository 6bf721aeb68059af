#pragma once

#include "service/ai/extraction/Conversation.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace dorix::service {

/// A sentence of a meeting that says what is to be done, or what was decided. The texts are the transcript's.
struct Note {
    std::size_t turn = 0;
    std::string_view sentence;
    std::string_view who;   // a name, or the speaker whose task it is; empty when nobody is told
    std::string_view when;  // as it was said; may be empty
};

struct MeetingNotes {
    std::vector<Note> decisions;
    std::vector<Note> tasks;
};

/// Told by what people say when they decide or promise, in Spanish and English. Linear; pure.
MeetingNotes notesOf(const std::vector<Turn>& turns);

}  // namespace dorix::service
