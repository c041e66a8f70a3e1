// word/comments.xml: the editing hints, shown beside the text they belong to.
#include <array>

#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

std::string editingHintText(int id) {
  // Ids 0 to 3 follow the introduction's four steps, 4 to 10 the method and
  // its subsections, 11 the results and 12 the discussion.
  static const std::array<const char*, 13> hints = {
      "State the specific problem under study and why it deserves new research.",
      "Explain why the problem matters: how the study relates to earlier work and what its theoretical and "
      "practical implications are.",
      "Review the literature that bears on your argument; cite the work that matters rather than an exhaustive "
      "history, and credit earlier findings.",
      "State your hypotheses and objectives, and how they follow from the research design.",
      "Describe how the study was conducted in enough detail that another researcher could replicate it: "
      "participants, materials and procedure.",
      "Give the major demographic characteristics: age, sex, ethnic and racial group, level of education, and any "
      "characteristics particular to the topic.",
      "Describe how participants were selected: inclusion and exclusion criteria, settings and locations, and any "
      "agreements or payments.",
      "Report the intended sample size, the power analysis or other method used to decide it, and any interim "
      "analyses or stopping rules.",
      "Define the primary and secondary measures and covariates, how the data were collected, and what was done to "
      "make the measurements reliable.",
      "Say whether conditions were manipulated or observed, and name the design (between subjects, within "
      "subjects, longitudinal, ...).",
      "Describe each condition's intervention or manipulation, its setting and who delivered it, in enough detail "
      "to replicate it.",
      "Summarise the data collected and the analyses performed, including results that run against your "
      "hypotheses; refer to tables and figures.",
      "Evaluate and interpret the results in the light of your hypotheses; note the study's limitations, how far "
      "the findings generalise, and what follows from them.",
  };
  return id >= 0 && static_cast<size_t>(id) < hints.size() ? hints[static_cast<size_t>(id)] : "";
}

std::string commentsXml(const std::vector<std::string>& texts) {
  XmlDocument doc;
  pugi::xml_node comments = doc.wordRoot("w:comments");
  for (size_t i = 0; i < texts.size(); ++i) {
    pugi::xml_node c = child(comments, "w:comment");
    attr(c, "w:id", static_cast<long>(i));
    attr(c, "w:author", "QuillPaper");
    attr(c, "w:initials", "QP");
    pugi::xml_node p = child(c, "w:p");
    valued(child(p, "w:pPr"), "w:pStyle", "CommentText");
    pugi::xml_node t = child(child(p, "w:r"), "w:t");
    t.text() = xmlSafe(texts[i]).c_str();
  }
  return doc.str();
}

}  // namespace quillpaper::docx
