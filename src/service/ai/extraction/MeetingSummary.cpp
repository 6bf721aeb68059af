#include "service/ai/extraction/MeetingSummary.h"

#include "service/ai/extraction/Conversation.h"
#include "service/ai/extraction/MeetingNotes.h"
#include "service/ai/extraction/Quotation.h"
#include "service/ai/extraction/Ranking.h"

#include <algorithm>
#include <set>
#include <vector>

namespace dorix::service {

namespace {

constexpr std::size_t mostCentral = 3;
constexpr std::size_t mostNotes = 12;  // of a kind
constexpr std::size_t longestName = 60;

std::string speakerName(std::string_view speaker, const Frame& frame) {
    if (speaker == userSpeaker) return std::string(frame.user);
    if (speaker == othersSpeaker) return std::string(frame.others);
    return plainLine(speaker, longestName);
}

/// Who said it, and when.
std::string origin(const Turn& turn, const Frame& frame) {
    std::string out = speakerName(turn.speaker, frame);
    if (!turn.time.empty()) out += (out.empty() ? "" : ", ") + plainLine(turn.time, longestName);
    return out.empty() ? out : " — " + out;
}

/// Whose task, and until when, in bold before it.
std::string headOf(const Note& note, const Frame& frame) {
    std::string head = speakerName(note.who, frame);
    if (!note.when.empty()) head += (head.empty() ? "" : ", ") + plainLine(note.when, longestName);
    return head.empty() ? head : "**" + head + "**: ";
}

void addList(std::string& out, std::string_view title, const std::vector<Note>& notes,
             const std::vector<Turn>& turns, const Frame& frame) {
    if (notes.empty()) return;
    out += (out.empty() ? "**" : "\n**") + std::string(title) + "**";
    for (std::size_t at = 0; at < std::min(notes.size(), mostNotes); ++at) {
        out += "\n- " + headOf(notes[at], frame) + quoted(notes[at].sentence, frame) +
               origin(turns[notes[at].turn], frame);
    }
}

/// The sentences that say most, those left aside that are quoted as notes.
std::string gistOf(const std::vector<Turn>& turns, const MeetingNotes& notes, const Frame& frame) {
    std::set<const char*> noted;
    for (const auto* list : {&notes.decisions, &notes.tasks}) {
        for (const auto& note : *list) noted.insert(note.sentence.data());
    }
    std::vector<Passage> passages;
    for (std::size_t turn = 0; turn < turns.size(); ++turn) {
        for (const auto sentence : sentencesOf(turns[turn].text)) {
            if (!noted.contains(sentence.data()) && !sentence.ends_with('?'))
                passages.push_back({.source = turn, .text = sentence});
        }
    }
    std::string out;
    for (const auto at : centralPassages(passages, mostCentral))
        out += "\n- " + quoted(passages[at].text, frame) + origin(turns[passages[at].source], frame);
    return out.empty() ? out : std::string(frame.gist) + out;
}

}  // namespace

std::string meetingSummary(std::string_view transcript, const Frame& frame) {
    const auto turns = turnsOf(transcript);
    const auto notes = notesOf(turns);
    auto out = gistOf(turns, notes, frame);
    addList(out, frame.decisions, notes.decisions, turns, frame);
    addList(out, frame.tasks, notes.tasks, turns, frame);
    return out;
}

}  // namespace dorix::service
