#include "strings/ReferenceRules.h"

#include <algorithm>
#include <array>
#include <string>

#include "strings/StringUtility.h"

namespace QuillStrings::rules {

namespace {

template <size_t N>
bool listed(const std::array<std::string_view, N>& list, std::string_view word) {
  return std::find(list.begin(), list.end(), word) != list.end();
}

// Titles of persons, publication details, Latin words.
constexpr std::array<std::string_view, 20> kAbbreviations = {
    "Dr", "Mr", "Mrs", "Ms", "St", "No", "Nos", "Vol", "Vols", "Ed",
    "Eds", "Trans", "Jr", "Sr", "vs", "cf", "al", "ca", "pp", "p"};

constexpr std::array<std::string_view, 28> kPeriodicalWords = {
    "journal",  "review",    "times",      "magazine",  "quarterly",    "news",      "post",     "bulletin",
    "gazette",  "tribune",   "herald",     "daily",     "weekly",       "monthly",   "annals",   "letters",
    "transactions", "chronicle", "observer", "guardian", "telegraph",   "digest",    "psychologist",
    "newsletter", "courier", "globe",      "register",  "sun"};

// Abbreviations inside the names of periodicals ("Phys. Rev. Lett.", "J. Am.
// Chem. Soc."), publishers and institutions ("Univ.", "Dept.", "Co.").
// ("Trans." is among the abbreviations above.)
constexpr std::array<std::string_view, 46> kNameAbbreviations = {
    "Phys", "Rev",   "Lett",  "Soc",  "Chem", "Am",    "Amer", "Math",  "Proc",  "Int",   "Natl",  "Acad",
    "Sci",  "Res",   "Biol",  "Med",  "Psychol", "Eng", "Comput", "Inf", "Appl",  "Stat",  "Econ",  "Educ",
    "Mol",  "Neurosci", "Exp", "Clin", "Nucl", "Astron", "Geophys", "Ann", "Bull", "Mech", "Opt",   "Co",
    "Corp", "Inc",   "Ltd",   "Univ", "Dept", "Inst",  "Assoc", "Commun", "Electron", "Sp"};

// Words of the names of organisations, agencies, bands and companies.
constexpr std::array<std::string_view, 70> kGroupWords = {
    "Academy",     "Administration", "Agency",      "Alliance",    "American",     "Assembly",   "Association",
    "Authority",   "Bank",           "Board",       "British",     "Bureau",       "Census",     "Center",
    "Centre",      "Clinic",         "Club",        "Coalition",   "College",      "Commission", "Committee",
    "Company",     "Congress",       "Consortium",  "Corporation", "Council",      "Court",      "Department",
    "Division",    "European",       "Federal",     "Federation",  "Force",        "Foundation", "Fund",
    "Government",  "Group",          "Health",      "Hospital",    "Inc",          "Initiative",
    "Institute",   "Institutes",     "Institution", "International", "Laboratory", "League",     "Library",
    "Ltd",         "Ministry",    "Museum",      "National",     "Nations",    "Network",
    "Office",      "Organisation",   "Organization", "Panel",      "Parliament",   "Partnership", "Press",
    "Program",     "Programme",      "Project",     "Research",    "School",       "Senate",     "Service",
    "Services",    "Society"};

constexpr std::array<std::string_view, 28> kSmallWords = {
    "a",  "an", "and", "the", "of", "for", "on", "in", "to", "at", "de",  "du",  "des", "la",
    "le", "van", "von", "der", "den", "y", "e", "und", "et", "da", "di", "del", "ten", "ter"};

constexpr std::array<std::string_view, 10> kDescriptionWords = {
    "thesis", "dissertation", "report", "publication", "monograph", "version", "series", "brochure", "manuscript", "no."};

constexpr std::array<std::string_view, 11> kAbbreviatedStates = {
    "Mass", "Calif", "Ill", "Conn", "Penn", "Mich", "Wis", "Minn", "Tex", "Fla", "N.Y"};

constexpr std::array<std::string_view, 60> kCountries = {
    "U.S.A",       "U.K",        "England",     "Scotland",      "Wales",
    "Ireland",     "Canada",      "Australia",  "New Zealand", "Germany",    "France",        "Italy",
    "Spain",       "Portugal",    "The Netherlands", "Netherlands", "Belgium", "Switzerland", "Austria",
    "Denmark",     "Sweden",      "Norway",     "Finland",    "Iceland",     "Poland",        "Czech Republic",
    "Hungary",     "Greece",      "Turkey",     "Russia",     "Israel",      "Egypt",         "South Africa",
    "Nigeria",     "Kenya",       "India",      "Pakistan",   "China",       "Japan",         "Korea",
    "South Korea", "Taiwan",      "Singapore",  "Malaysia",   "Indonesia",   "Thailand",      "Philippines",
    "Vietnam",     "Brazil",      "Argentina",  "Chile",      "Mexico",      "Colombia",      "Peru",
    "Hong Kong",   "United States", "United Kingdom", "Polska", "Deutschland", "Schweiz"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool isDateContent(std::string_view content) {
  if (content == "n.d." || content == "in press" || content == "In press") return true;
  // An estimated date: "ca. 1937".
  if (content.starts_with("ca. ")) content.remove_prefix(4);
  if (content.size() < 4 || content.size() > 40) return false;
  if (!std::all_of(content.begin(), content.begin() + 4, isDigit)) return false;
  if (content.size() == 4) return true;
  // A year with a letter ("1999a", "1999A"), a month, a day, a season or a range of years.
  const char next = content[4];
  const bool letter = (next >= 'a' && next <= 'z') || (next >= 'A' && next <= 'Z');
  return next == ',' || next == '-' || (content.size() == 5 && letter) || content.substr(4).starts_with("\u2013");
}

size_t dateGroup(std::string_view text) {
  for (size_t at = text.find(" ("); at != std::string_view::npos; at = text.find(" (", at + 1)) {
    const size_t close = text.substr(at + 2, 41).find(')');
    if (close != std::string_view::npos && isDateContent(text.substr(at + 2, close))) return at;
  }
  return std::string_view::npos;
}

bool isAbbreviation(std::string_view word) {
  // A single capital is an initial ("C. F. Gauss", "U.S.").
  if (word.size() == 1 && word[0] >= 'A' && word[0] <= 'Z') return true;
  return listed(kAbbreviations, word);
}

bool isPeriodicalWord(std::string_view word) { return listed(kPeriodicalWords, word); }

bool isNameAbbreviation(std::string_view word) { return listed(kNameAbbreviations, word); }

bool isGroupWord(std::string_view word) { return listed(kGroupWords, word); }

bool isSmallWord(std::string_view word) { return listed(kSmallWords, word); }

bool hasDescriptionWord(std::string_view group) {
  const std::string lower = strings().lower(group);
  return std::any_of(kDescriptionWords.begin(), kDescriptionWords.end(),
                     [&](std::string_view w) { return lower.find(w) != std::string::npos; });
}

bool isPresentation(std::string_view statement) {
  const std::string lower = strings().lower(statement);
  return lower.find("presented at") != std::string::npos || lower.find("conducted at") != std::string::npos;
}

bool isRegionName(std::string_view part) {
  while (!part.empty() && part.front() == ' ') part.remove_prefix(1);
  while (!part.empty() && (part.back() == ' ' || part.back() == '.')) part.remove_suffix(1);
  if (part.size() >= 2 && part.size() <= 3 && std::all_of(part.begin(), part.end(), [](char c) { return c >= 'A' && c <= 'Z'; }))
    return true;
  return listed(kAbbreviatedStates, part) || listed(kCountries, part);
}

}  // namespace QuillStrings::rules
