#include "reader/Features.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <initializer_list>
#include <string>
#include <unordered_map>
#include <utility>

namespace quillreader {

namespace {

// The code point at `i` (advancing `i`); malformed bytes stand for themselves.
char32_t next(std::string_view s, size_t& i) {
  const unsigned char c = static_cast<unsigned char>(s[i]);
  const int extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
  if (c < 0x80 || extra == 0 || i + static_cast<size_t>(extra) >= s.size()) {
    ++i;
    return c;
  }
  char32_t cp = c & (0x3F >> extra);
  for (int k = 1; k <= extra; ++k) {
    const unsigned char d = static_cast<unsigned char>(s[i + static_cast<size_t>(k)]);
    if ((d & 0xC0) != 0x80) {
      ++i;
      return c;
    }
    cp = (cp << 6) | (d & 0x3F);
  }
  i += static_cast<size_t>(extra) + 1;
  return cp;
}

// Letters as the training data's tokenizer sees them: ASCII letters, and any
// code point beyond ASCII that is not a space, punctuation or a symbol.
bool isLetter(char32_t c) {
  if (c < 0x80) return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  if (c == 0xAA || c == 0xB5 || c == 0xBA) return true;
  if (c < 0xC0 || c == 0xD7 || c == 0xF7) return false;
  if ((c >= 0x2000 && c <= 0x2BFF) || (c >= 0x3000 && c <= 0x303F) || (c >= 0xFE30 && c <= 0xFE4F) ||
      (c >= 0xFF00 && c <= 0xFF0F) || (c >= 0xFF1A && c <= 0xFF20))
    return false;
  return true;
}
bool isDigit(char32_t c) { return c >= '0' && c <= '9'; }
bool isSpace(char32_t c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == 0xA0 || c == 0x2009; }

bool startsWithAddress(std::string_view s) {
  return s.starts_with("http://") || s.starts_with("https://") || s.starts_with("doi:");
}

// "10.1037/..." at a word's start.
bool startsWithDoi(std::string_view s) {
  if (!s.starts_with("10.")) return false;
  size_t i = 3;
  while (i < s.size() && isDigit(static_cast<unsigned char>(s[i]))) ++i;
  return i >= 7 && i < s.size() && s[i] == '/';
}

}  // namespace

std::vector<Token> tokenize(std::string_view text) {
  std::vector<Token> out;
  size_t i = 0;
  bool afterWordChar = false;
  while (i < text.size()) {
    size_t j = i;
    const char32_t c = next(text, j);
    if (isSpace(c)) {
      i = j;
      afterWordChar = false;
      continue;
    }
    const std::string_view rest = text.substr(i);
    if (startsWithAddress(rest) || (!afterWordChar && startsWithDoi(rest))) {
      size_t end = i;
      if (rest.starts_with("doi: ")) end += 5;
      while (end < text.size()) {
        size_t k = end;
        if (isSpace(next(text, k))) break;
        end = k;
      }
      // An address does not take the full stop (or comma) that ends it.
      while (end - i > 1 && std::string_view(".,;)").find(text[end - 1]) != std::string_view::npos) --end;
      out.push_back({i, end});
      i = end;
      afterWordChar = true;
      continue;
    }
    if (isDigit(c)) {
      size_t end = j;
      while (end < text.size() && isDigit(static_cast<unsigned char>(text[end]))) ++end;
      out.push_back({i, end});
      i = end;
      afterWordChar = true;
      continue;
    }
    if (isLetter(c)) {
      size_t end = j;
      for (;;) {
        size_t k = end;
        if (k >= text.size()) break;
        const char32_t d = next(text, k);
        if (isLetter(d)) {
          end = k;
          continue;
        }
        // An inner apostrophe or hyphen joins letters: "Brooks-Gunn", "O'Neil".
        if (d == '\'' || d == 0x2019 || d == '-') {
          size_t m = k;
          if (m < text.size() && isLetter(next(text, m))) {
            end = m;
            continue;
          }
        }
        break;
      }
      out.push_back({i, end});
      i = end;
      afterWordChar = true;
      continue;
    }
    out.push_back({i, j});
    i = j;
    afterWordChar = false;
  }
  return out;
}

namespace {

// A feature's hash: FNV-1a over its kind, a 0xFF byte, and its value, each
// given in pieces as they would be joined ("w-1|w" and "of|the"), so that no
// string is built for it.
uint64_t hash(std::initializer_list<std::string_view> kind, std::initializer_list<std::string_view> value) {
  uint64_t h = 1469598103934665603ull;
  for (std::string_view piece : kind)
    for (char c : piece) h = (h ^ static_cast<unsigned char>(c)) * 1099511628211ull;
  h = (h ^ 0xFF) * 1099511628211ull;
  for (std::string_view piece : value)
    for (char c : piece) h = (h ^ static_cast<unsigned char>(c)) * 1099511628211ull;
  return h;
}

// "0" to "12": the small numbers features name.
std::string_view numeral(size_t n) {
  static constexpr std::string_view kNumerals[] = {"0", "1", "2", "3", "4",  "5", "6",
                                                   "7", "8", "9", "10", "11", "12"};
  return kNumerals[n];
}

std::string lower(std::string_view s) {
  std::string out(s);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

// "Xxxx" for "Journal", "dddd" for "1993", "X." is not a shape (punctuation
// is its own token): runs of one class are cut at two.
std::string shape(std::string_view s) {
  std::string out;
  size_t i = 0;
  while (i < s.size()) {
    const char32_t c = next(s, i);
    const char k = isDigit(c)                ? 'd'
                   : (c >= 'A' && c <= 'Z')    ? 'X'
                   : isLetter(c)               ? 'x'
                   : c < 0x80                  ? static_cast<char>(c)
                                               : '*';
    if (out.size() >= 2 && out[out.size() - 1] == k && out[out.size() - 2] == k) continue;
    out += k;
  }
  return out;
}

// The word lists the reader knows, by the feature they give ("month", "pub", ...).
const char* lexicon(std::string_view w) {
  static const std::unordered_map<std::string_view, const char*> kLexicon = [] {
    std::unordered_map<std::string_view, const char*> map;
    // A word's first list is its own.
    const auto add = [&](const char* feature, std::initializer_list<std::string_view> words) {
      for (std::string_view word : words) map.emplace(word, feature);
    };
    add("month", {"january", "february", "march", "april", "may", "june", "july", "august", "september", "october",
                  "november", "december", "jan", "feb", "mar", "apr", "jun", "jul", "aug", "sep", "sept", "oct",
                  "nov", "dec", "spring", "summer", "fall", "autumn", "winter"});
    add("ed", {"ed", "eds", "edn", "edition", "editor", "editors", "edited", "hrsg"});
    add("vol", {"vol", "volume", "vols", "bd"});
    add("no", {"no", "nr", "issue", "iss", "number"});
    add("pp", {"p", "pp", "pages", "page", "s"});
    add("pub", {"press", "university", "publishing", "publishers", "publisher", "books", "inc", "ltd", "co",
                "wiley", "springer", "elsevier", "sage", "routledge", "verlag", "academic", "association", "society",
                "institute", "house", "company", "group"});
    add("journal", {"journal", "review", "proceedings", "quarterly", "bulletin", "annals", "transactions", "letters",
                    "magazine", "studies", "research", "science", "psychology", "psychological", "j", "rev", "proc",
                    "trans", "conference", "symposium", "workshop", "international", "newsletter", "times",
                    "post"});
    add("in", {"in"});
    add("access", {"retrieved", "available", "accessed", "from", "online", "at", "url", "cited", "viewed"});
    add("and", {"and", "&", "et", "al"});
    add("genre", {"thesis", "dissertation", "report", "video", "film", "podcast", "blog", "tweet", "manuscript",
                  "unpublished", "doctoral", "master's", "masters", "phd", "technical", "motion", "picture"});
    add("given", {"aaron", "abdul", "abraham", "adam", "adrian", "agnes", "ahmad", "ahmed", "alan", "albert",
                   "alberto", "alejandro", "alex", "alexander", "alexandra", "alexandre", "alfred", "ali", "alice",
                   "alicia", "alison", "allan", "allen", "alma", "amanda", "ambrose", "amelia", "amir", "amos", "amy",
                   "ana", "anders", "andrea", "andreas", "andrew", "andré", "andrés", "angela", "angelo", "angus",
                   "anil", "ankit", "anna", "anne", "annie", "anthony", "antoine", "anton", "antonio", "archibald",
                   "arjun", "arnaud", "arthur", "ashley", "astrid", "audrey", "august", "axel", "barbara", "barnaby",
                   "barry", "basil", "beatrice", "ben", "benjamin", "bernadette", "bernard", "bernd", "bertrand",
                   "beth", "betty", "bill", "birgit", "björn", "bob", "bonnie", "boris", "brad", "bradley", "brenda",
                   "brian", "bruce", "bruno", "calvin", "camille", "carl", "carla", "carlos", "carmen", "carol",
                   "caroline", "carsten", "casper", "catherine", "cecil", "cecilia", "cedric", "celia", "charles",
                   "charlotte", "chen", "chester", "chris", "christian", "christina", "christine", "christopher",
                   "christos", "claire", "clara", "clarence", "claude", "claudia", "claudio", "clement", "clifford",
                   "colette", "colin", "conrad", "cora", "cornelia", "craig", "cristina", "cynthia", "cyril",
                   "dagmar", "dale", "daniel", "daniela", "daniele", "danielle", "darren", "david", "dean", "deborah",
                   "dennis", "derek", "desmond", "dexter", "diana", "diane", "dieter", "dimitri", "dimitris",
                   "dmitri", "dmitry", "dolores", "domenico", "dominique", "donald", "donna", "doris", "dorothy",
                   "douglas", "duncan", "dwight", "earl", "edgar", "edith", "edmund", "edward", "edwin", "elaine",
                   "eleanor", "elena", "eleni", "elias", "elisabeth", "elise", "eliza", "elizabeth", "ella", "ellen",
                   "elliot", "eloise", "emile", "emilio", "emily", "emma", "emmanuel", "enrico", "eric", "erik",
                   "erika", "ernest", "ernst", "estelle", "esther", "eugene", "eugenia", "eva", "evelyn", "everett",
                   "ezra", "fabio", "fatima", "federico", "felipe", "felix", "fernando", "fiona", "florian", "floyd",
                   "frances", "francesca", "francesco", "francis", "francisco", "frank", "françois", "françoise",
                   "fred", "frederick", "frédéric", "gabriel", "gabriele", "gareth", "gary", "gemma", "georg",
                   "george", "georgina", "georgios", "gerald", "gerhard", "gertrude", "gianni", "gilbert", "gillian",
                   "giorgio", "giovanni", "giulia", "giuseppe", "gladys", "glen", "glenn", "godfrey", "gonzalo",
                   "gordon", "grace", "graham", "greg", "gregory", "guillermo", "gunnar", "gustav", "gustavo", "gwen",
                   "günter", "hannah", "hannes", "hans", "hao", "harald", "harold", "harriet", "harry", "harvey",
                   "hassan", "hazel", "heather", "heidi", "heike", "heinrich", "helen", "helga", "helmut", "henri",
                   "henry", "herbert", "herman", "hideo", "hilda", "hiroshi", "horace", "howard", "hugh", "hugo",
                   "ian", "ida", "ignacio", "ignatius", "ines", "ingrid", "irene", "iris", "isaac", "isabel",
                   "isabella", "isabelle", "ivan", "jack", "jacob", "jacqueline", "jacques", "jakob", "james", "jan",
                   "jane", "janet", "jason", "jasper", "javier", "jean", "jeanne", "jeff", "jeffrey", "jennifer",
                   "jens", "jeremy", "jerome", "jessica", "jia", "jim", "jin", "joachim", "joan", "joanna", "joanne",
                   "jocelyn", "joe", "johann", "johannes", "john", "jonathan", "jorge", "josef", "josep", "joseph",
                   "josephine", "joshua", "josé", "joyce", "joão", "juan", "judith", "julia", "julian", "julie",
                   "julien", "julius", "june", "junichi", "jürgen", "kai", "kamal", "karen", "karl", "katarzyna",
                   "kate", "katharina", "katherine", "kathleen", "kathryn", "katrin", "kazimierz", "keith", "kelly",
                   "kenji", "kenneth", "kevin", "kim", "kirk", "klaus", "knut", "koji", "krishna", "krzysztof",
                   "kurt", "kyle", "larry", "lars", "laura", "lauren", "laurent", "lawrence", "lei", "lena", "leo",
                   "leona", "leonard", "leonardo", "leslie", "li", "lillian", "lin", "linda", "lionel", "lisa",
                   "lloyd", "lorenzo", "lorraine", "lou", "louis", "louise", "luca", "lucas", "lucia", "luciano",
                   "lucy", "luigi", "luis", "luther", "lydia", "lyle", "lynn", "mabel", "madeleine", "madeline",
                   "magnus", "maja", "malcolm", "malik", "manfred", "manuel", "mar", "marc", "marcel", "marcelo",
                   "marco", "marcus", "marek", "margaret", "margarethe", "margarita", "marguerite", "maria",
                   "marianne", "marie", "marilyn", "marina", "mario", "marjorie", "mark", "markus", "marta", "martha",
                   "martin", "marvin", "mary", "massimo", "mateo", "matteo", "matthew", "matthias", "maureen",
                   "maurice", "max", "maximilian", "mehmet", "mei", "melissa", "michael", "michel", "michele",
                   "michelle", "miguel", "mike", "mikhail", "mildred", "milton", "ming", "miriam", "mitchell",
                   "mohamed", "mohammad", "mohammed", "molly", "monica", "morris", "muriel", "nadia", "nadine",
                   "nancy", "naoki", "naomi", "natalie", "nathan", "nathaniel", "neil", "neville", "nicholas",
                   "nicola", "nicolas", "nikolai", "nikolaos", "nils", "nina", "noel", "nora", "norman", "ole",
                   "olga", "olive", "oliver", "olivier", "omar", "oscar", "otto", "pablo", "pamela", "pascal",
                   "patricia", "patrick", "paul", "paula", "pauline", "pavel", "pedro", "penelope", "percy", "peter",
                   "petra", "philip", "philippe", "phyllis", "pierre", "pietro", "piotr", "priscilla", "priya",
                   "quentin", "rachel", "rafael", "rahul", "rainer", "rajesh", "ralph", "ramón", "ray", "raymond",
                   "raúl", "rebecca", "reginald", "renate", "rex", "ricardo", "riccardo", "richard", "rick", "rita",
                   "robert", "roberto", "robin", "roger", "roland", "rolf", "ronald", "rosa", "rosemary", "roxanne",
                   "roy", "rudolf", "rupert", "ruth", "ryan", "sabine", "sally", "salvatore", "samuel", "sandra",
                   "sandro", "sanjay", "sara", "sarah", "satoshi", "scott", "sean", "sebastian", "selma", "sergei",
                   "sergey", "sergio", "seymour", "sharon", "sheila", "shin", "sidney", "silas", "silvia", "simon",
                   "sofia", "solomon", "sonja", "sophie", "stanley", "stefan", "stefano", "stephanie", "stephen",
                   "steve", "steven", "stuart", "sunil", "susan", "susanne", "sven", "sylvester", "sylvia", "takashi",
                   "tatiana", "tekla", "teresa", "terry", "thea", "theo", "theodore", "thierry", "thomas", "thorsten",
                   "tim", "timothy", "tobias", "tom", "tomasz", "tomás", "tony", "travis", "troy", "ulrich",
                   "ulysses", "ursula", "uwe", "valentina", "valerie", "vanessa", "vera", "vernon", "veronica",
                   "victor", "viktor", "vincent", "virgil", "virginia", "vivian", "vladimir", "wallace", "walter",
                   "wanda", "warren", "wayne", "wei", "werner", "wilbur", "william", "winston", "wolfgang", "xavier",
                   "yan", "yang", "yasmin", "yuki", "yuri", "yusuf", "yves", "yvonne", "zhang"});
    add("place", {"new", "york", "london", "washington", "cambridge", "oxford", "boston", "chicago", "berlin",
                  "paris", "amsterdam", "philadelphia", "san", "francisco", "los", "angeles", "toronto", "ny", "ma",
                  "ca", "dc", "nj", "il", "uk", "usa", "england", "heidelberg", "hillsdale", "mahwah", "thousand",
                  "oaks"});
    return map;
  }();
  const auto it = kLexicon.find(w);
  return it == kLexicon.end() ? nullptr : it->second;
}

bool isRoman(const std::string& w) {
  return !w.empty() && w.size() <= 6 && w.find_first_not_of("ivxlcdm") == std::string::npos;
}

}  // namespace

bool isGivenName(std::string_view word) {
  const char* list = lexicon(lower(word));
  return list != nullptr && std::string_view(list) == "given";
}

std::vector<std::vector<uint32_t>> tokenFeatures(std::string_view entry, const std::vector<Token>& tokens,
                                                 size_t buckets) {
  const size_t n = tokens.size();
  std::vector<std::string> words(n), shapes(n);
  for (size_t i = 0; i < n; ++i) {
    const std::string_view t = entry.substr(tokens[i].begin, tokens[i].end - tokens[i].begin);
    words[i] = lower(t);
    shapes[i] = shape(t);
  }
  std::vector<std::vector<uint32_t>> out(n);
  // The segments of the entry: the stretches between full stops that end a
  // sentence (not "M." or "pp."), outside quotes and parentheses; what a
  // segment holds tells title from container from publisher.
  std::vector<int> segmentOf(n, 0);
  {
    int q = 0, p = 0, seg = 0;
    for (size_t i = 0; i < n; ++i) {
      segmentOf[i] = seg;
      const std::string& w = words[i];
      if (w == "\xe2\x80\x9c" || (w == "\"" && q == 0)) ++q;
      else if ((w == "\xe2\x80\x9d" || w == "\"") && q > 0) --q;
      if (w == "(") ++p;
      if (w == ")" && p > 0) --p;
      const bool spaceAfter = i + 1 < n && tokens[i].end < tokens[i + 1].begin;
      if ((w == "." || w == "?" || w == "!") && q == 0 && p == 0 && spaceAfter &&
          !(i > 0 && words[i - 1].size() <= 2 && std::isalpha(static_cast<unsigned char>(words[i - 1][0]))))
        ++seg;
    }
  }
  struct Segment {
    int words = 0, lower = 0, digits = 0, quotes = 0, year = 0;
  };
  std::vector<Segment> segments(static_cast<size_t>(n ? segmentOf[n - 1] + 1 : 0));
  for (size_t i = 0; i < n; ++i) {
    Segment& g = segments[static_cast<size_t>(segmentOf[i])];
    const std::string& w = words[i];
    if (w.empty()) continue;
    const unsigned char c = static_cast<unsigned char>(entry[tokens[i].begin]);
    if (std::isalpha(c) || c >= 0x80) {
      ++g.words;
      if (std::islower(c)) ++g.lower;
    }
    if (std::isdigit(c)) {
      ++g.digits;
      if (w.size() == 4) ++g.year;
    }
    if (w == "\xe2\x80\x9c" || w == "\"") ++g.quotes;
  }
  auto bucket = [](int v) { return v == 0 ? "0" : v == 1 ? "1" : v <= 3 ? "2-3" : v <= 7 ? "4-7" : "8+"; };
  int yearSegment = -1;
  for (size_t i = 0; i < n && yearSegment < 0; ++i)
    if (words[i].size() == 4 && std::isdigit(static_cast<unsigned char>(words[i][0]))) yearSegment = segmentOf[i];

  // Context as the entry is read from the left: quotes, parentheses,
  // brackets, and the segment (the number of full stops that ended one),
  // and the commas of the segment so far (one after "Vygotsky, L. S.": the
  // name is whole and what follows is its title).
  int quotes = 0, parens = 0, brackets = 0, segment = 0, commas = 0;
  for (size_t i = 0; i < n; ++i) {
    std::vector<uint32_t>& f = out[i];
    f.reserve(48);
    auto add = [&](std::initializer_list<std::string_view> kind, std::initializer_list<std::string_view> value) {
      f.push_back(static_cast<uint32_t>(hash(kind, value) % buckets));
    };
    const std::string& w = words[i];
    const std::string& s = shapes[i];
    const std::string_view wv = w;
    add({"bias"}, {});
    add({"w"}, {w});
    add({"s"}, {s});
    if (w.size() > 3) {
      add({"p3"}, {wv.substr(0, 3)});
      add({"x3"}, {wv.substr(w.size() - 3)});
    }
    if (w.size() > 2) add({"x2"}, {wv.substr(w.size() - 2)});
    add({"len"}, {numeral(std::min<size_t>(w.size(), 12))});
    const bool number = !w.empty() && std::all_of(w.begin(), w.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (number) {
      add({"num"}, {numeral(std::min<size_t>(w.size(), 5))});
      if (w.size() == 4 && (w.starts_with("1") || w.starts_with("20"))) add({"year"}, {});
    }
    if (isRoman(w)) add({"roman"}, {});
    if (const char* lex = lexicon(w)) add({"lex"}, {lex});
    if (w.find("doi.org/") != std::string::npos || w.starts_with("doi:") || w.starts_with("10."))
      add({"addr"}, {"doi"});
    else if (w.starts_with("http") || w.starts_with("www"))
      add({"addr"}, {"url"});
    add({"quote"}, {quotes > 0 ? "in" : "out"});
    add({"paren"}, {parens > 0 ? "in" : "out"});
    add({"bracket"}, {brackets > 0 ? "in" : "out"});
    add({"seg"}, {numeral(static_cast<size_t>(std::min(segment, 6)))});
    {
      const Segment& g = segments[static_cast<size_t>(segmentOf[i])];
      add({"segwords"}, {bucket(g.words)});
      add({"seglower"}, {g.words == 0 ? "none" : g.lower * 3 >= g.words * 2 ? "most" : g.lower > 1 ? "some" : "few"});
      add({"segdigits"}, {bucket(g.digits)});
      add({"segquote"}, {g.quotes ? "y" : "n"});
      add({"segyear"}, {g.year ? "y" : "n"});
      add({"yearseg"}, {yearSegment < 0 ? "none" : segmentOf[i] < yearSegment ? "before" : segmentOf[i] == yearSegment ? "same" : "after"});
      add({"segstart"}, {i == 0 || segmentOf[i - 1] != segmentOf[i] ? "y" : "n"});
      add({"seglast"}, {segmentOf[i] == segmentOf[n - 1] ? "y" : "n"});
    }
    add({"pos"}, {numeral(n > 1 ? i * 10 / n : 0)});
    if (i == 0) add({"first"}, {});
    if (i + 1 == n) add({"last"}, {});
    const bool spaceBefore = i > 0 && tokens[i - 1].end < tokens[i].begin;
    const bool spaceAfter = i + 1 < n && tokens[i].end < tokens[i + 1].begin;
    add({"space"}, {spaceBefore ? "b" : "-", spaceAfter ? "a" : "-"});
    static constexpr std::pair<int, std::string_view> kNeighbours[] = {{-2, "-2"}, {-1, "-1"}, {1, "1"}, {2, "2"}};
    for (const auto& [d, key] : kNeighbours) {
      const long j = static_cast<long>(i) + d;
      if (j < 0 || j >= static_cast<long>(n)) {
        add({"w", key}, {"<edge>"});
        continue;
      }
      add({"w", key}, {words[static_cast<size_t>(j)]});
      if (d == -1 || d == 1) {
        add({"s", key}, {shapes[static_cast<size_t>(j)]});
        if (const char* lex = lexicon(words[static_cast<size_t>(j)])) add({"lex", key}, {lex});
      }
    }
    if (i > 0) add({"w-1|w"}, {words[i - 1], "|", w});
    if (i + 1 < n) add({"w|w+1"}, {w, "|", words[i + 1]});
    if (i > 0) add({"s-1|s"}, {shapes[i - 1], "|", s});
    const std::string_view commaCount = commas == 0 ? "0" : commas == 1 ? "1" : commas <= 3 ? "2-3" : "4+";
    add({"commas"}, {commaCount});
    if (i > 1) {
      add({"s-2"}, {shapes[i - 2]});
      add({"s-2|w-1|s"}, {shapes[i - 2], "|", words[i - 1], "|", s});
      // Just after an initial ("S." of "L. S."), by how many commas came before it.
      if (words[i - 1] == "." && shapes[i - 2] == "X") add({"initial|commas|s"}, {commaCount, "|", s});
    }

    // The context after this token, for the next one.
    if (w == "\xe2\x80\x9c" || (w == "\"" && quotes == 0)) ++quotes;
    else if ((w == "\xe2\x80\x9d" || w == "\"") && quotes > 0) --quotes;
    if (w == "(") ++parens;
    if (w == ")" && parens > 0) --parens;
    if (w == "[") ++brackets;
    if (w == "]" && brackets > 0) --brackets;
    if (w == "," && quotes == 0 && parens == 0) ++commas;
    if ((w == "." || w == "?" || w == "!") && quotes == 0 && parens == 0 && spaceAfter) {
      // "M. H." and "pp." end no segment: a full stop after a short word does not count.
      const bool abbreviation = i > 0 && words[i - 1].size() <= 2 && !number;
      if (!abbreviation) {
        ++segment;
        commas = 0;
      }
    }
  }
  return out;
}

}  // namespace quillreader
