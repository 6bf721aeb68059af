#include "writing/EnglishDates.h"

#include "base/text/Regex.h"

#include <array>
#include <string_view>

namespace dorix {

namespace {

struct Name {
    Regex found;
    std::string_view written;
};

}  // namespace

std::string withEnglishDates(std::string text) {
    static const std::array<Name, 17> names{{{Regex(R"(\bmonday)"), "Monday"},
                                             {Regex(R"(\btuesday)"), "Tuesday"},
                                             {Regex(R"(\bwednesday)"), "Wednesday"},
                                             {Regex(R"(\bthursday)"), "Thursday"},
                                             {Regex(R"(\bfriday)"), "Friday"},
                                             {Regex(R"(\bsaturday)"), "Saturday"},
                                             {Regex(R"(\bsunday)"), "Sunday"},
                                             {Regex(R"(\bjanuary\b)"), "January"},
                                             {Regex(R"(\bfebruary\b)"), "February"},
                                             {Regex(R"(\bapril\b)"), "April"},
                                             {Regex(R"(\bjune\b)"), "June"},
                                             {Regex(R"(\bjuly\b)"), "July"},
                                             {Regex(R"(\baugust\b)"), "August"},
                                             {Regex(R"(\bseptember\b)"), "September"},
                                             {Regex(R"(\boctober\b)"), "October"},
                                             {Regex(R"(\bnovember\b)"), "November"},
                                             {Regex(R"(\bdecember\b)"), "December"}}};
    static const std::array<Name, 4> ambiguous{
        {{Regex(
              R"((?<=\b(?:in|of|since|until|till|during|last|early|late|every|[0-9]{1,2}|(?:st|nd|rd|th)) )may\b)"),
          "May"},
         {Regex(R"(\bmay(?= [0-9]{1,2}(?:st|nd|rd|th)?\b))"), "May"},
         {Regex(
              R"((?<=\b(?:in|of|since|until|till|during|last|early|late|every|[0-9]{1,2}|(?:st|nd|rd|th)) )march\b)"),
          "March"},
         {Regex(R"(\bmarch(?= [0-9]{1,2}(?:st|nd|rd|th)?\b))"), "March"}}};
    for (const auto& name : names) text = name.found.replaceAll(text, name.written);
    for (const auto& name : ambiguous) text = name.found.replaceAll(text, name.written);
    return text;
}

}  // namespace dorix
