#pragma once

#include <filesystem>
#include <ostream>
#include <vector>

#include "quillpaper/Document.h"
#include "quillpaper/ReferencePipeline.h"
#include "quillpaper/Session.h"

namespace quillpaper {

// Orders references as an APA reference list: by the first author's family
// name letter by letter (an entry without author by its title, "A", "An" and
// "The" left out), then by the other authors, then by year.
void sortReferenceList(std::vector<FormattedReference>& references);

// The list in each output form. An entry that could not be made sense of is
// written as typed; an entry kept out of the list (a personal communication)
// is left out.
void writeText(const std::vector<FormattedReference>& references, std::ostream& out);
void writeHtml(const std::vector<FormattedReference>& references, std::ostream& out);
void writeMarkdown(const std::vector<FormattedReference>& references, std::ostream& out);
void writeJsonLines(const std::vector<FormattedReference>& references, std::ostream& out);

// The list as paragraphs of the reference-list style.
std::vector<doc::Paragraph> referenceParagraphs(const std::vector<FormattedReference>& references);
// A .docx with the References page.
void writeReferenceListDocx(const std::vector<FormattedReference>& references, Session& session,
                            const std::filesystem::path& path);

}  // namespace quillpaper
