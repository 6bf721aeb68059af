#include "context/Tone.h"

#include <algorithm>
#include <array>

namespace dorix {

namespace {

struct Row {
    Tone tone;
    std::string_view name;
    std::string_view label;
};

constexpr auto rows = std::to_array<Row>({
    {Tone::informal, "informal", "Informal"},
    {Tone::profesional, "profesional", "Profesional"},
    {Tone::cercano, "cercano", "Cercano"},
    {Tone::comunicativo, "comunicativo", "Comunicativo"},
    {Tone::estructurado, "estructurado", "Estructurado"},
    {Tone::tecnico, "tecnico", "Técnico"},
    {Tone::neutral, "neutral", "Natural"},
});

const Row& rowOf(Tone tone) { return *std::ranges::find(rows, tone, &Row::tone); }

}  // namespace

std::string_view toneName(Tone tone) { return rowOf(tone).name; }

std::string_view historyLabel(Tone tone) { return rowOf(tone).label; }

}  // namespace dorix
