#include "quillpaper/references/ReferencePipeline.h"

#include <regex>

#include "command/ClassFactory.h"
#include "host/Array.h"
#include "host/CallSite.h"
#include "quillpaper/references/Corrections.h"
#include "quillpaper/references/LabelledEntry.h"
#include "quillpaper/references/ReferenceFormatter.h"
#include "quillpaper/references/ReferenceSource.h"
#include "quillpaper/references/TypedForms.h"
#include "quillpaper/references/WordAudit.h"
#include "strings/ReferenceRules.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

std::string yearOf(const std::string& date) {
  for (size_t i = 0; i + 4 <= date.size(); ++i)
    if (std::isdigit(static_cast<unsigned char>(date[i])) && std::isdigit(static_cast<unsigned char>(date[i + 1])) &&
        std::isdigit(static_cast<unsigned char>(date[i + 2])) && std::isdigit(static_cast<unsigned char>(date[i + 3])))
      return date.substr(i, 4);
  return date;
}

std::string withoutLabel(std::string text, std::initializer_list<std::string_view> labels) {
  for (std::string_view label : labels)
    if (str().stripLeading(text, label)) return str().trimmed(text);
  return text;
}

// The fields of the parsed entry under the names a reader of the list knows.
// A chapter's book is its container; an author list tagged "(Ed.)" or
// "(Eds.)" names the editors of the work.
void readFields(const ReferenceSource& source, FormattedReference& r) {
  const std::string tag = source.text("editorTag");
  (tag.empty() ? r.authors : r.editors) = source.authors();
  r.editorsLead = !tag.empty() && !r.editors.empty();
  if (r.editors.empty()) r.editors = parseGivenFirstNames(source.text("editorStr"));
  std::string date = source.text("publishDate");
  if (date.empty()) date = source.text("OnlinePublishDate");
  r.year = yearOf(date);
  r.title = source.text("title");
  r.containerTitle = source.text("Periodical");
  if (r.containerTitle.empty()) r.containerTitle = source.text("subwork");
  r.volume = withoutLabel(source.text("volume"), {"Vols.", "Vol."});
  r.issue = source.text("Number");
  r.pages = source.text("pageRange");
  if (r.pages.empty()) r.pages = source.text("BookPageRange");
  r.publisher = source.text("publisher");
  r.place = source.text("place");
  // "Paper presented at the meeting of …, Place" names a meeting, not a publisher.
  if (QuillStrings::rules::isPresentation(r.publisher)) r.publisher.clear(), r.place.clear();
  r.edition = source.text("editionBook");
  // A review without a title of its own is known by the work it reviews.
  if (str().beginsWith(r.title, "[Review of ") && str().endsWith(r.title, "]"))
    r.title = str().trimmed(r.title.substr(11, r.title.size() - 12));
  // A book in the author's place carries its edition in the title: "Van Dale
  // groot woordenboek (2nd ed.)".
  if (r.edition.empty() && r.authors.empty() && str().endsWith(r.title, "ed.)")) {
    const size_t open = r.title.rfind(" (");
    if (open != std::string::npos) {
      r.edition = r.title.substr(open + 2, r.title.size() - open - 3);
      r.title.erase(open);
    }
  }
  if (source.addressIsDoi())
    r.doi = source.address();
  else
    r.url = source.url();
}

// The words APA itself changes in an author list: given names written as
// initials, the "&" before the last of several persons and, from eight
// authors on, the names between the sixth and the last.
Rewrites apaRewrites(const NameList& list, const AuthorStyle& style) {
  Rewrites rewrites;
  const std::vector<PersonName>& authors = list.names;
  for (const PersonName& n : authors) {
    if (!style.initialsOnly) break;
    for (const std::string& word : str().split(n.given, " ", -1)) {
      if (!hasWrittenOutGivenName(word)) continue;
      rewrites.mayLose.push_back(word);
      rewrites.mayAdd.push_back(initialsOf(word));
    }
  }
  const bool persons = std::all_of(authors.begin(), authors.end(), [](const PersonName& n) { return !n.given.empty(); });
  if (authors.size() >= 2 && persons && !list.etAl) rewrites.mayAdd.push_back("&");
  elidedNames(list, style, rewrites);
  return rewrites;
}

}  // namespace

std::string tidyEntry(std::string_view raw) {
  std::string text;
  text.reserve(raw.size());
  bool blank = false;
  for (unsigned char c : raw) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == 0x0B || c == 0x0C) {
      blank = true;
      continue;
    }
    if (c < 0x20 || c == 0x7F) continue;
    if (blank && !text.empty()) text += ' ';
    blank = false;
    text += static_cast<char>(c);
  }
  if (str().beginsWith(text, "\xEF\xBB\xBF")) text.erase(0, 3);
  return text;
}

namespace {

// The items the entry class fills, as the template's rows ask for them.
struct Items {
  std::vector<std::string> plain;
  std::vector<std::vector<TextRun>> formatted;
  std::vector<bool> checks;
};

Items itemsOf(const ObjectRef& entry, int last, bool isFootnote) {
  Array checks = Array::vector(0, last, VarType::Boolean);
  if (entry->idOfName("initChecking") != kUnknownDispId)
    callByName(entry, "initChecking", byRef(isFootnote), byRef(checks));
  Array plain = Array::vector(0, last, VarType::String);
  Array formatted = Array::vector(0, last, VarType::Object);
  std::vector<Ref<FormattedText>> texts;
  for (int i = 0; i <= last; ++i) {
    texts.push_back(make<FormattedText>());
    formatted.set(i, ObjectRef(texts.back()));
  }
  bool shortened = false;
  callByName(entry, "toFormattedStringImpl", byRef(isFootnote), byRef(plain), byRef(formatted), byRef(shortened));
  Items items;
  items.plain = toStrings(plain);
  for (int i = 0; i <= last; ++i) {
    items.formatted.push_back(texts[static_cast<size_t>(i)]->runs());
    items.checks.push_back(checks.get(i).toBool());
  }
  return items;
}

constexpr int kElectronicSource = 4;

// Where APA's date after the authors stands: "(2001).", "(2001a, May 3).",
// "(1951–1963),", "(1987–).", "(n.d.).", "(in press)."; npos when nowhere.
size_t apaDateAt(std::string_view text) {
  const auto digits4 = [&](size_t i) {
    if (i + 4 > text.size()) return false;
    for (size_t k = i; k < i + 4; ++k)
      if (text[k] < '0' || text[k] > '9') return false;
    return true;
  };
  // Where the closing parenthesis of a date starting after `(` at `open` is.
  const auto dateEnd = [&](size_t open) -> size_t {
    size_t i = open + 1;
    const std::string_view rest = text.substr(i);
    if (rest.starts_with("n.d.")) return i + 4;
    if (rest.starts_with("in press")) return i + 8;
    if (!digits4(i)) return std::string_view::npos;
    i += 4;
    if (i < text.size() && text[i] >= 'a' && text[i] <= 'z') ++i;
    // A range: "1951–1963", "1987–".
    const size_t dash = text.substr(i).starts_with("-") ? 1 : text.substr(i).starts_with("\xe2\x80\x93") ? 3 : 0;
    if (dash) {
      i += dash;
      if (digits4(i)) i += 4;
    }
    if (text.substr(i).starts_with(", ")) {
      // One to thirty characters up to the closing parenthesis.
      const size_t close = text.find(')', i + 2);
      if (close == std::string_view::npos || close == i + 2 || close - (i + 2) > 30) return std::string_view::npos;
      return close;
    }
    return i;
  };
  for (size_t open = text.find('('); open != std::string_view::npos; open = text.find('(', open + 1)) {
    const size_t close = dateEnd(open);
    if (close != std::string_view::npos && close + 1 < text.size() && text[close] == ')' &&
        (text[close + 1] == '.' || text[close + 1] == ','))
      return open;
  }
  return std::string_view::npos;
}

// APA's date after the authors, or with the comma people type for its full
// stop ("(2001),"), in the first two thirds of the entry. A date inside a
// quotation is a quoted title's ("“Contents of double issue 46–47 (2006).”").
bool looksApa(std::string_view entry) {
  const size_t at = apaDateAt(entry);
  if (at == std::string_view::npos) return false;
  const std::string_view before = entry.substr(0, at);
  const bool quoted = str().occurrences(before, "\"") % 2 == 1 ||
                      str().occurrences(before, "\xe2\x80\x9c") > str().occurrences(before, "\xe2\x80\x9d");
  return at < entry.size() * 2 / 3 && !quoted;
}

// A volume joined to its pages by a colon, as people and other styles
// write it ("135:28–31", "12(3): 45–67").
bool hasVolumeColonPages(std::string_view entry) {
  const auto digit = [&](size_t i) { return i < entry.size() && std::isdigit(static_cast<unsigned char>(entry[i])); };
  for (size_t colon = entry.find(':'); colon != std::string_view::npos; colon = entry.find(':', colon + 1)) {
    const size_t after = colon + 1 < entry.size() && entry[colon + 1] == ' ' ? colon + 2 : colon + 1;
    if (!digit(after)) continue;
    size_t end = colon;  // one past the volume's digits
    if (end > 0 && entry[end - 1] == ')') {  // an issue between them: "12(3):"
      const size_t open = entry.rfind('(', end - 1);
      if (open == std::string_view::npos || end - open > 12 ||
          entry.substr(open, end - open).find(' ') != std::string_view::npos)
        continue;
      end = open;
    }
    size_t begin = end;
    while (begin > 0 && digit(begin - 1)) --begin;
    if (begin < end && (begin == 0 || entry[begin - 1] == ' ' || entry[begin - 1] == ',')) return true;
  }
  return false;
}

// Names a reading may stand on: one group, or persons each with a family
// name free of commas and given names that start with a capital.
bool plausibleNames(const std::vector<PersonName>& names) {
  // A group: a name of words, with nothing a broken list of persons leaves ("H., S. (. P.").
  if (names.size() == 1 && names[0].given.empty())
    return !names[0].family.empty() && names[0].family.find_first_of(",()") == std::string::npos;
  return std::all_of(names.begin(), names.end(), [](const PersonName& n) {
    // A family name of capitals alone ("MH") is initials read as a name.
    const bool initialsOnly = n.family.size() <= 3 && std::none_of(n.family.begin(), n.family.end(), [](char c) {
      return std::islower(static_cast<unsigned char>(c));
    });
    return !n.family.empty() && !initialsOnly && n.family.find(',') == std::string::npos && !n.given.empty() &&
           std::isupper(static_cast<unsigned char>(n.given[0]));
  });
}

// Letters and digits alone, in lower case: parts compared as a reader compares them.
std::string bare(std::string_view s) {
  std::string out;
  for (char c : s)
    if (std::isalnum(static_cast<unsigned char>(c)) || static_cast<unsigned char>(c) >= 0x80)
      out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// A word of three letters or more that is no roman numeral ("Issue 260",
// "Bologna"; not "xii", "e1003", "S12").
bool holdsAWord(std::string_view part) {
  size_t letters = 0;
  bool roman = true;
  for (size_t i = 0; i <= part.size(); ++i) {
    const char c = i < part.size() ? part[i] : ' ';
    if (std::isalpha(static_cast<unsigned char>(c))) {
      ++letters;
      roman = roman && std::string_view("ivxlcdmIVXLCDM").find(c) != std::string_view::npos;
      continue;
    }
    if (letters >= 3 && !roman) return true;
    letters = 0;
    roman = true;
  }
  return false;
}

// A number followed by such a word ("22nd edition", "1109 Spring Street"):
// no volume or page range is one ("Special issue D", "Cover 3" are not).
bool numberThenWord(std::string_view part) {
  return !part.empty() && std::isdigit(static_cast<unsigned char>(part[0])) && holdsAWord(part);
}

// The APA rules read another style's parts as theirs: a volume and its pages
// not read as a periodical's ("Time, 135:28–31"), a place read into the
// publisher's name or in part ("and Hamburg"), editors named as BibTeX names
// them ("In Gaw, A. C., editor, Culture…", "Lee, A., editors (1994).") not
// read as editors, Vancouver's "Jones J" read as a family name, the colon of
// "38(9):229–231" read into the pages, words as a volume ("22nd edition",
// "1109 Spring Street"), a list's number as the year. Such a reading is no
// reading to stand on ("Lee, A., & editors."): what it misread, or empty.
std::string misreading(const FormattedReference& r) {
  if ((r.volume.empty() && hasVolumeColonPages(r.input)) || str().contains(r.volume, ":"))
    return "the APA rules did not read the volume before its pages";
  if (!placeAfterTheName(r.publisher).empty()) return "the APA rules read the place into the publisher's name";
  if (r.place.starts_with("and ") || r.place.starts_with("& ")) return "the APA rules read only the end of the place";
  if (str().contains(r.input, ", editor") && r.editors.empty())
    return "the APA rules did not read the editors named after the list";
  if (std::any_of(r.authors.begin(), r.authors.end(), [](const PersonName& n) { return isFamilyAndInitials(n.family); }))
    return "the APA rules read a name and its initials as one family name";
  if (!r.pages.empty() && !std::isalnum(static_cast<unsigned char>(r.pages[0])))
    return "the APA rules read the punctuation before the pages into them";
  if (numberThenWord(r.volume) || numberThenWord(r.pages) || (holdsAWord(r.pages) && str().contains(r.pages, ",")))
    return "the APA rules read words as a volume or pages";
  if (!r.year.empty() && r.year.size() < 4 &&
      std::all_of(r.year.begin(), r.year.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); }))
    return "the APA rules read a number as the year";
  return {};
}

// Whether the rules, reading the APA form, found the parts the reader read.
bool readsBack(const FormattedReference& r, const LabelledEntry& written) {
  const LabelledEntry::Fields& f = written.fields;
  const std::pair<const std::string*, const std::string*> parts[] = {
      {&r.title, &f.title},     {&r.containerTitle, &f.container}, {&r.volume, &f.volume},
      {&r.issue, &f.issue},     {&r.pages, &f.pages},              {&r.publisher, &f.publisher},
      {&r.place, &written.placeWritten}};
  // (Of eight names or more, APA 6 writes the first six and the last.)
  const auto families = [](const std::vector<PersonName>& names) {
    std::string out;
    for (size_t k = 0; k < names.size(); ++k)
      if (names.size() < 8 || k < 6 || k + 1 == names.size()) out += bare(names[k].family) + "|";
    return out;
  };
  return std::all_of(std::begin(parts), std::end(parts), [](const auto& p) { return bare(*p.first) == bare(*p.second); }) &&
         families(r.authors) == families(f.authors) && families(r.editors) == families(f.editors);
}

// The parts as the reader read them, for the fields reported (the rules'
// DOI, address and edition stand: they are written as APA writes them).
void reportFields(FormattedReference& r, const LabelledEntry::Fields& f) {
  r.title = f.title;
  r.containerTitle = f.container;
  r.volume = f.volume;
  r.issue = f.issue;
  r.pages = f.pages;
  r.publisher = f.publisher;
  r.place = f.place;
  r.authors = f.authors;
  r.editors = f.editors;
}

// How long a list's numbering at the start of an entry is, blanks around it
// included ("1. ", "(1) ", "[1] ", "12 " before "Family, I."), or 0.
size_t numberingLength(std::string_view s) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; };
  const auto digit = [](char c) { return c >= '0' && c <= '9'; };
  size_t i = 0;
  while (i < s.size() && blank(s[i])) ++i;
  // Up to three digits, and where they end.
  const auto digits = [&](size_t from) {
    size_t j = from;
    while (j < s.size() && digit(s[j])) ++j;
    return j - from >= 1 && j - from <= 3 ? j : std::string_view::npos;
  };
  size_t end = std::string_view::npos;
  if (i < s.size() && (s[i] == '[' || s[i] == '(')) {
    const char close = s[i] == '[' ? ']' : ')';
    const size_t j = digits(i + 1);
    if (j != std::string_view::npos && j < s.size() && s[j] == close) end = j + 1;
  } else if (const size_t j = digits(i); j != std::string_view::npos) {
    if (j < s.size() && s[j] == '.') {
      end = j + 1;
    } else {
      // "12 Family, I.": a name and its initial after the number.
      size_t k = j;
      while (k < s.size() && blank(s[k])) ++k;
      const size_t word = k;
      while (k < s.size() && !blank(s[k]) && s[k] != ',') ++k;
      if (word > j && k > word && s.substr(k).starts_with(", ")) {
        k += 2;
        // One to three characters and a full stop: "I.", "St.".
        for (size_t n = 1; n <= 3 && k + n < s.size(); ++n) {
          if (blank(s[k + n - 1]) || s[k + n - 1] == ',') break;
          if (s[k + n] == '.') {
            end = j;
            break;
          }
        }
      }
    }
  }
  if (end == std::string_view::npos || end >= s.size() || !blank(s[end])) return 0;
  while (end < s.size() && blank(s[end])) ++end;
  return end;
}

// Whether the entry is one the personal-communication rule is for.
bool isPersonalCommunication(std::string_view entry) {
  const std::string lower = str().lower(entry);
  return str().contains(lower, "personal communication") || str().contains(lower, "e-mail") ||
         str().contains(lower, "email");
}

}  // namespace

ReferencePipeline::ReferencePipeline(Session& session, Options options, ObjectRef main2)
    : session_(session),
      options_(options),
      main2_(main2 ? std::move(main2) : session.main2()),
      probe_(createObject("QuillFormatAPA.Periodical")) {}

ReferencePipeline::~ReferencePipeline() = default;

const ReferencePipeline::EntryClass& ReferencePipeline::entryClass(int type) {
  if (auto it = classes_.find(type); it != classes_.end()) return it->second;
  EntryClass c{make<FormatterSettings>(), {}};
  // The edition is the template's to ask for; without it the library writes the 6th.
  if (options_.edition == 7) c.settings->setProperty("APAEdition", Variant(int16_t{7}));
  c.entry = callByName(main2_, "ReferenceBuilder", static_cast<int16_t>(type), ObjectRef(c.settings),
                       "quillpaper")
                .toObject();
  if (!c.entry) throw AutomationError(kObjectRequired, "no entry class for reference type " + std::to_string(type));
  if (c.settings->output().lastIndex() < 0)
    throw AutomationError(kObjectRequired, "the entry class registered no output template");
  return classes_.emplace(type, std::move(c)).first->second;
}

FormattedReference ReferencePipeline::format(std::string_view entry, int line) {
  // A list's numbering ("1.", "(1)", "[1]", "1" before "Family, I.") is no
  // part of the work: neither reader reads it, and the entry kept as typed
  // keeps it.
  const size_t numbering = options_.steps == Steps::All ? numberingLength(entry) : 0;
  FormattedReference r = formatTheWork(entry.substr(numbering), line);
  r.input = std::string(entry);
  return r;
}

FormattedReference ReferencePipeline::formatTheWork(std::string_view entry, int line) {
  FormattedReference r = formatWithRules(entry, line);
  if (!r.excludedBecause.empty() || !options_.reader || options_.steps != Steps::All) return r;
  if (r.ok())
    if (std::string why = misreading(r); !why.empty()) r.problems.push_back(std::move(why));
  // The APA rules' reading stands for an entry typed in APA's own form: its
  // date in APA's place ("Lee, A. (2001). …") and its words in their order.
  if (r.ok() && looksApa(r.input) && keepsWordOrder(r.input, r.text())) return r;
  return formatAsLabelled(entry, std::move(r));
}

FormattedReference ReferencePipeline::formatAsLabelled(std::string_view entry, FormattedReference rules) {
  // The rules' reading, if they had one, stands when the learned reader cannot do better.
  const bool rulesRead = rules.ok();
  auto unsure = [&](std::string why) {
    if (!rulesRead) rules.problems.push_back(std::move(why));
    return rules;
  };
  std::string text = tidyEntry(entry);
  if (text.empty() || !str().isValidUtf8(entry)) return rules;
  // A list's numbering ("[3]", "(3)", "3.") or citation key ("[Knu84]",
  // "[GMRS04]", "[JPS+18a]", "[Grä93]") is no part of the work.
  std::string numbering;
  static const std::regex kNumbering(R"(^(\[[0-9]+\]|\([0-9]+\)|[0-9]+\.|\[[^\]\s0-9][^\]\s]{0,11}[0-9]{2,4}[a-z]?\])\s+)");
  std::smatch m;
  if (std::regex_search(text, m, kNumbering)) {
    numbering = m[1].str();
    text.erase(0, static_cast<size_t>(m.length(0)));
  }
  const quillreader::Reading reading = mended(options_.reader->read(text), text);
  rules.readerConfidence = reading.confidence;
  std::optional<LabelledEntry> labelled = apaFormOf(text, reading);
  if (!labelled) return unsure("read as another citation style, it has no title or no date");
  FormattedReference r = formatWithRules(labelled->apa, rules.line, labelled->type);
  if (!r.ok()) return unsure("read as another citation style, its APA form does not read as APA");
  if (!labelled->notes.empty()) appendRun(r.runs, " " + labelled->notes, false);
  r.input = std::string(entry);
  r.reader = "learned";
  r.readerConfidence = reading.confidence;
  // A reading that is unsure, or whose APA form would not keep the entry
  // whole, keeps the entry as typed; it still says what it read (its type
  // and fields), which the rules could not.
  auto keptAsTyped = [&](std::string why) {
    // An entry with APA's date in APA's place that the rules read whole is theirs after all.
    if (rulesRead && looksApa(rules.input)) return std::move(rules);
    r.problems.push_back("read as another citation style, " + std::move(why));
    return std::move(r);
  };
  // The rules read the APA form back: where they read a part otherwise than
  // the reader did, the form says something the reader did not mean.
  const bool readBack = readsBack(r, *labelled);
  reportFields(r, labelled->fields);
  if (!readBack) return keptAsTyped("its APA form reads back otherwise");
  if (reading.confidence < options_.readerThreshold) return keptAsTyped("too uncertainly to be trusted");
  if (splitsPhrase(text, reading)) return keptAsTyped("its parts would cut a phrase in two");
  // The rules kept every word of the APA form; that form keeps every typed word.
  // Against the entry as typed, as the rules' audit is: the numbering aside.
  if (!numbering.empty()) labelled->rewrites.mayLose.push_back(numbering);
  const WordAudit audit = auditWords(entry, labelled->written(), labelled->rewrites);
  if (!audit.clean()) return keptAsTyped(audit.reason());
  if (const std::vector<std::string> lost = wordsLost(entry, *labelled); !lost.empty())
    return keptAsTyped("the APA form would lose \"" + lost.front() + "\"");
  if (!plausibleNames(r.authors) || !plausibleNames(r.editors))
    return keptAsTyped("its names do not read as APA writes them");
  if (holdsAWord(r.pages) || (!r.pages.empty() && std::none_of(r.pages.begin(), r.pages.end(), [](char c) {
                                 return std::isdigit(static_cast<unsigned char>(c));
                               })))
    return keptAsTyped("its pages are no page numbers");
  return r;
}

FormattedReference ReferencePipeline::formatWithRules(std::string_view entry, int line, std::optional<int> type) {
  FormattedReference r;
  r.line = line;
  r.input = std::string(entry);
  const bool hostSteps = options_.steps == Steps::All;
  const size_t errorsBefore = session_.service().errorsOnThisThread();
  Ref<FormatterSettings> settings = make<FormatterSettings>();  // the entry class's, once known
  const ObjectRef& main2 = main2_;
  TypedEntry typed;
  typed.text = tidyEntry(entry);
  if (hostSteps) typed = readTypedForms(typed.text);
  const std::string& text = typed.text;
  auto source = make<ReferenceSource>(settings, text);
  if (text.empty()) {
    r.problems.push_back("the entry is empty");
    return r;
  }
  if (!str().isValidUtf8(entry)) {
    r.problems.push_back("it holds bytes that are not UTF-8 text (the file's encoding may be another)");
    return r;
  }
  try {
    // The title first, as a periodical reads it; the classifier compares it
    // with the entry and looks for the periodical's mark in it.
    bool isFootnote = false;
    std::string decorated, subTitle;
    callByName(probe_, "FindTitleImpl", text, byRef(isFootnote), byRef(decorated), byRef(subTitle));
    auto classify = [&](const std::string& t) {
      std::string d = decorated, sub = subTitle;
      return static_cast<int>(callByName(main2, "GetReferenceType", t, byRef(d), byRef(sub), ObjectRef(source)).toInteger());
    };
    if (type) {
      r.type = *type;
    } else {
      r.type = classify(text);
      if (hostSteps) r.type = typed.email ? kElectronicSource : corrections::type(r.type, text, decorated, classify);
    }

    const EntryClass& entryClass = this->entryClass(r.type);
    settings = entryClass.settings;
    source->useSettings(settings);
    const ObjectRef& entryObject = entryClass.entry;
    ObjectRef sourceObject(source);
    callByName(entryObject, "setDataSource", byRef(sourceObject));
    std::string titleStr = callByName(entryObject, "FindTitleImpl", text, byRef(isFootnote), byRef(decorated),
                                      byRef(subTitle))
                               .toString();
    std::string rest = text;
    callByName(entryObject, "parseEntry", byRef(rest), byRef(titleStr), byRef(isFootnote));
    if (hostSteps) {
      source->keepAccessDate(typed.accessDate);
      source->keepSiteName(typed.siteName);
      corrections::fields(r.type, *source, *settings);
    }

    OutputTemplate& output = settings->output();
    Items items = itemsOf(entryObject, output.lastIndex(), isFootnote);
    if (hostSteps) corrections::items(r.type, items.formatted);
    r.runs = output.join(items.plain, items.formatted, items.checks);
    if (hostSteps) {
      corrections::runs(r.type, r.runs);
      std::string database = typed.databaseStatement;
      // The 7th edition names the database without "Retrieved from".
      if (options_.edition == 7)
        for (std::string_view label : {"Retrieved from ", "Available from "})
          if (str().stripLeading(database, label)) break;
      for (const std::string& after : {database, typed.trailingNote})
        if (!after.empty()) appendRun(r.runs, " " + after, false);
    }
  } catch (const AutomationError& e) {
    r.problems.push_back(e.what());
  }

  readFields(*source, r);
  // An entry the template is told to keep out of the reference list: a
  // personal communication, when the entry really is one.
  const std::string disabled = settings->text("disableKey(1)");
  const auto eq = disabled.find('=');
  if (eq != std::string::npos && source->text(disabled.substr(0, eq)) == disabled.substr(eq + 1)) {
    if (typed.email || isPersonalCommunication(text) || !hostSteps)
      r.excludedBecause = settings->text("disableReason(1)") + " (" + settings->text("disableReference(1)") + ")";
    else
      r.problems.push_back("read as a personal communication, but it names none: an electronic source ends with its "
                           "bracketed description (\"[Web log post]\") and its address");
  }

  if (session_.service().errorsOnThisThread() > errorsBefore) {
    const ReportedError e = session_.service().lastErrorOnThisThread();
    r.problems.push_back("the formatting library reported an error (" + e.description + " in " + e.where + ")");
  }
  if (r.ok() && r.title.empty() && r.authors.empty()) r.problems.push_back("no author and no title found");
  if (r.ok() && (r.year.empty() || r.year == "n.d.") && !str().contains(text, "n.d."))
    r.problems.push_back("no date found: APA writes the year in parentheses after the author, or \"(n.d.)\"");
  if (r.ok() && str().trimmed(r.text()).empty()) r.problems.push_back("nothing could be formatted");
  if (r.ok() && hostSteps) {
    Rewrites rewrites = apaRewrites(source->authorList(), settings->authorStyle());
    // The 7th edition leaves out a publisher's place and an e-book's format.
    // (A place that holds more than a place, a title read as one, is no such rewrite.)
    if (options_.edition == 7 && !r.publisher.empty() && looksLikePlace(r.place)) rewrites.mayLose.push_back(r.place);
    if (options_.edition == 7 && str().contains(source->text("Medium"), "version"))
      rewrites.mayLose.push_back(source->text("Medium"));
    const WordAudit audit = auditWords(r.input, r.text(), rewrites);
    if (!audit.clean()) r.problems.push_back(audit.reason());
  }
  return r;
}

}  // namespace quillpaper
