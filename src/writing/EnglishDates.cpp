#include "writing/EnglishDates.h"

#include "base/text/Regex.h"

#include <array>
#include <string>
#include <string_view>

namespace dorix {

namespace {

/// The end of the name, which is no part of a longer one: of a file, an address, something in a program.
constexpr std::string_view end = R"(\b(?!@|\.\p{L}))";
constexpr std::string_view beforeMonth =
    R"((?<=\b(?:in|of|since|until|till|during|last|early|late|every|[0-9]{1,2}(?:st|nd|rd|th)?) ))";
constexpr std::string_view beforeDay = R"((?= [0-9]{1,2}(?:st|nd|rd|th)?\b))";

struct Name {
    Regex found;
    std::string_view written;
};

Regex day(const std::string& name) { return Regex("\\b" + name + "(?=s?" + std::string(end) + ")"); }

Regex month(const std::string& name) { return Regex("\\b" + name + std::string(end)); }

/// A month whose name is another word as well: where it stands in a date.
Regex monthInDate(const std::string& name) {
    const std::string whole = "\\b" + name + std::string(end);
    return Regex(std::string(beforeMonth) + whole + "|" + whole + std::string(beforeDay));
}

}  // namespace

std::string withEnglishDates(std::string text) {
    static const std::array<Name, 19> names{{
        {day("monday"), "Monday"},       {day("tuesday"), "Tuesday"},       {day("wednesday"), "Wednesday"},
        {day("thursday"), "Thursday"},   {day("friday"), "Friday"},         {day("saturday"), "Saturday"},
        {day("sunday"), "Sunday"},       {month("january"), "January"},     {month("february"), "February"},
        {month("april"), "April"},       {month("june"), "June"},           {month("july"), "July"},
        {month("august"), "August"},     {month("september"), "September"}, {month("october"), "October"},
        {month("november"), "November"}, {month("december"), "December"},   {monthInDate("may"), "May"},
        {monthInDate("march"), "March"},
    }};
    for (const auto& name : names) text = name.found.replaceAll(text, name.written);
    return text;
}

}  // namespace dorix
