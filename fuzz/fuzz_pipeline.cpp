// The whole reference pipeline on arbitrary lines, as `quillpaper refs` runs
// it, with every output form written: a result or a clear problem, never a
// crash and never an error inside the library. What the list shows is the
// entry as typed, or an APA form that loses and adds no word but for what
// APA changes in the names of authors and editors (initials, also typed
// together, the names between the sixth and the last, other styles' labels
// of the editors), a list's numbering, a page range or a month written short,
// a medium or a postcode APA does not write.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "quillpaper/Session.h"
#include "quillpaper/references/ReaderModel.h"
#include "quillpaper/references/ReferenceList.h"
#include "quillpaper/references/ReferencePipeline.h"
#include "quillpaper/references/WordAudit.h"

// The capitalised words within three words of `family` in `text`; every
// word of it without a family name.
std::vector<std::string> wordsNear(const std::string& text, const std::string& family) {
  std::vector<std::string> words;
  std::string word;
  for (char c : text + " ") {
    if (std::isalpha(static_cast<unsigned char>(c)) || c == '-' || (c & 0x80)) {
      word += c;
    } else if (!word.empty()) {
      words.push_back(word);
      word.clear();
    }
  }
  if (family.empty()) return words;  // every word
  std::vector<std::string> near;
  for (size_t k = 0; k < words.size(); ++k) {
    if (words[k] != family) continue;
    for (size_t j = k >= 3 ? k - 3 : 0; j < std::min(words.size(), k + 4); ++j)
      if (std::isupper(static_cast<unsigned char>(words[j][0]))) near.push_back(words[j]);
  }
  return near;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static quillpaper::Session session(
      quillpaper::DiagnosticsService::Options{quillpaper::ErrorPolicy::Exit, {}, std::filesystem::temp_directory_path()});
  // With the learned reader, as `quillpaper refs` reads: entries in other styles go to it.
  static std::string problem;
  static const quillreader::Model* model = quillpaper::readerModel(problem);
  quillpaper::ReferencePipeline pipeline(
      session, {.edition = 6, .reader = model, .readerThreshold = quillpaper::kReaderThreshold});
  const quillpaper::FormattedReference r =
      pipeline.format(std::string_view(reinterpret_cast<const char*>(data), size), 1);
  for (const std::string& problem : r.problems)
    if (problem.starts_with("the formatting library reported an error")) std::abort();
  std::vector<quillpaper::FormattedReference> list{r};
  std::ostringstream text;
  quillpaper::writeText(list, text);
  const std::string shown = text.str().substr(0, text.str().size() - (r.excludedBecause.empty() ? 1 : 0));
  if (r.excludedBecause.empty() && shown != r.input) {
    quillpaper::Rewrites names;
    for (const auto* people : {&r.authors, &r.editors})
      for (const quillpaper::PersonName& n : *people) {
        // Initials typed together ("KF", Vancouver's) are the same initials.
        std::string together;
        for (char c : n.given)
          if (c != '.' && c != ' ') together += c;
        names.mayLose.insert(names.mayLose.end(), {n.family, n.given, together});
        names.mayAdd.insert(names.mayAdd.end(), {quillpaper::initialsOf(n.given), "&"});
        // A given name written out beside the family name, written as its initial.
        for (const std::string& word : n.family.empty() ? std::vector<std::string>{} : wordsNear(r.input, n.family))
          if (together.find(word[0]) != std::string::npos) names.mayLose.push_back(word);
      }
    if (shown.find("\u2026") != std::string::npos) {
      names.mayLose.push_back("&");  // the ellipsis stands for it
      // and for the names typed between the sixth and the last.
      if (r.authors.size() >= 7) {
        const size_t sixth = r.input.find(r.authors[5].family), last = r.input.rfind(r.authors.back().family);
        if (sixth != std::string::npos && last != std::string::npos && sixth < last)
          for (const std::string& word : wordsNear(r.input.substr(sixth, last - sixth), ""))
            names.mayLose.push_back(word);
      }
    }
    // Other styles' labels of a part APA writes without one.
    if (!r.pages.empty() || shown.find("(pp. ") != std::string::npos || shown.find("(p. ") != std::string::npos)
      names.mayLose.insert(names.mayLose.end(), {"pp", "p", "page", "pages"});
    if (!r.volume.empty()) names.mayLose.insert(names.mayLose.end(), {"vol", "volume", "v"});
    if (!r.issue.empty()) names.mayLose.insert(names.mayLose.end(), {"no", "nr", "issue", "n"});
    // Other styles' labels of the editors, whom APA labels "(Ed.)".
    if (!r.editors.empty())
      for (const char* w : {"editor", "editors", "edited", "by", "and", "translated", "translator", "translators",
                            "trans", "eds", "ed"})
        names.mayLose.push_back(w);
    // A month written short ("2002 Feb 11") is written out ("2002, February 11").
    for (const char* month : {"Jan", "Feb", "Mar", "Apr", "Jun", "Jul", "Aug", "Sep", "Sept", "Oct", "Nov", "Dec"})
      names.mayLose.push_back(month);
    for (const char* month : {"January", "February", "March", "April", "June", "July", "August", "September",
                              "October", "November", "December"})
      names.mayAdd.push_back(month);
    // A page range written short ("1190-204") is written whole ("1190–1204").
    static const std::regex kShortRange(R"(([0-9]+)\s*(?:-|\xe2\x80\x93)\s*([0-9]+))");
    const std::string tidy = quillpaper::tidyEntry(r.input);  // as the pipeline reads it: control characters out
    for (auto it = std::sregex_iterator(tidy.begin(), tidy.end(), kShortRange); it != std::sregex_iterator(); ++it) {
      const std::string from = (*it)[1].str(), to = (*it)[2].str();
      if (to.size() >= from.size()) continue;
      names.mayLose.push_back(to);
      names.mayAdd.push_back(from.substr(0, from.size() - to.size()) + to);
    }
    // A list's numbering ("[3]", "(3)", "3.", "3", however bracketed or marked, "1.V Oakes" without its
    // space) is no part of the work.
    static const std::regex kNumbering(R"(^[^A-Za-z0-9]*([0-9]+)[^A-Za-z0-9\s]*(\s|[A-Za-z]))");
    if (std::smatch m; std::regex_search(tidy, m, kNumbering)) names.mayLose.push_back(m[1].str());
    // A thesis is named as APA names it ("PhD thesis" is a "Doctoral dissertation").
    if (shown.find("Doctoral dissertation") != std::string::npos || shown.find("Master's thesis") != std::string::npos) {
      names.mayLose.insert(names.mayLose.end(), {"phd", "ph", "d", "thesis", "dissertation", "msc", "sc", "ma", "m", "s"});
      names.mayAdd.insert(names.mayAdd.end(), {"doctoral", "dissertation", "master's", "thesis"});
    }
    // MLA's medium ("… 2001. Print.") and a postcode after a state ("MD 20910") APA does not write; a year
    // first published in brackets ("[1782] 1992") it writes as "(Original work published 1782)".
    names.mayLose.insert(names.mayLose.end(), {"print", "web"});
    static const std::regex kPostcode(R"(\b[A-Z]{2} ([0-9][0-9-]{3,9})\b)");
    for (auto it = std::sregex_iterator(tidy.begin(), tidy.end(), kPostcode); it != std::sregex_iterator(); ++it)
      names.mayLose.push_back((*it)[1].str());
    if (shown.find("(Original work published ") != std::string::npos)
      names.mayAdd.insert(names.mayAdd.end(), {"original", "work", "published"});
    // Nor is a citation key ("[Knu84]", "[GMRS04]"): its letters and its year.
    static const std::regex kKey(R"(^\s*\[([^\]\s0-9][^\]\s]{0,11}[0-9]{2,4}[a-z]?)\]\s)");
    if (std::smatch m; std::regex_search(tidy, m, kKey)) names.mayLose.push_back(m[1].str());
    if (const quillpaper::WordAudit audit = quillpaper::auditWords(r.input, shown, names); !audit.clean()) {
      std::fprintf(stderr, "%s\nshown: %s\n", audit.reason().c_str(), shown.c_str());
      std::abort();
    }
  }
  std::ostringstream out;
  quillpaper::writeHtml(list, out);
  quillpaper::writeMarkdown(list, out);
  quillpaper::writeJsonLines(list, out);
  return 0;
}
