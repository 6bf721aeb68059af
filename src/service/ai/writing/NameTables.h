#pragma once

#include "service/ai/WordSet.h"

#include <span>
#include <string_view>

/// Names that dictations hold, folded, without those that are also common words of their language.
namespace dorix::service::names {

/// Of people: the first ones on the lists of Spain's statistical office (INE, "Nombres más frecuentes") and
/// of the social security of the United States (SSA, "Top names of the century").
const WordSet& spanishGiven();
const WordSet& englishGiven();
/// Family names, which count behind a given name or a title; from INE and the United States' census of 2010.
const WordSet& family();

const WordSet& spanishPlaces();
const WordSet& englishPlaces();
/// Those of more words, of both languages.
std::span<const std::string_view> longPlaces();

/// English words that are always capitalised, for a language or where somebody comes from.
const WordSet& englishPeoples();
/// Abbreviations that are spoken in letters, or as a word.
const WordSet& abbreviations();

/// What stands before a family name: "señor", "Mrs".
const WordSet& titles();
/// What stands behind one and is no name: "señor director".
const WordSet& offices();
/// Who is greeted and has no name: "equipo", "everyone".
const WordSet& addressees();

}  // namespace dorix::service::names
