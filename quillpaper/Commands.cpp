#include "quillpaper/Commands.h"

#include <functional>
#include <map>

#include "quillpaper/CommandLine.h"
#include "quillpaper/Session.h"
#include "quillpaper/StartupForm.h"

namespace quillpaper {

namespace {

constexpr const char* kVersion = "quillpaper 0.1.0";

constexpr const char* kUsage =
    "usage: quillpaper COMMAND [OPTIONS]\n"
    "\n"
    "Commands:\n"
    "  new [FILE]     write the skeleton of an APA paper as a .docx (default paper.docx)\n"
    "  refs [FILE]    format a reference list in APA style (text, HTML, Markdown, JSON, .docx)\n"
    "  table KIND     write one APA statistics table as a .docx (table --list shows the kinds)\n"
    "  form           print the start-up form settings (sections, title-page fields)\n"
    "\n"
    "Run 'quillpaper COMMAND --help' for the options of a command.\n"
    "\n"
    "Options of every command:\n"
    "  --on-error=POLICY  what to do when the formatting library reports an error:\n"
    "                     exit (default: the command fails), ignore (go on; the output may\n"
    "                     lack a piece), retry, or ask (on a terminal)\n"
    "  --trace=FILE       write the library's procedure trace to FILE ('/trace' anywhere on\n"
    "                     the command line adds the parameters)\n"
    "  --dump-dir=DIR     where error dumps go (default $XDG_STATE_HOME/quillpaper)\n";

constexpr const char* kFormUsage =
    "usage: quillpaper form [--json] [--edition=7|6]\n"
    "\n"
    "Prints the start-up form: the paper's sections with their index and "
    "whether each is on\n"
    "by default for each paper type, and the title-page fields of each paper "
    "type with their\n"
    "hints, in the 7th edition (the default) or the 6th. --json prints the "
    "same as JSON.\n";

}  // namespace

int formCommand(CommandLine& cl, std::ostream& out, std::ostream& err) {
  const bool json = cl.flag("json");
  if (cl.flag("help")) {
    out << kFormUsage;
    return 0;
  }
  const int edition = cl.edition();
  Session session(cl.diagnostics());
  cl.finish();
  const StartupForm form = StartupForm::load(session.main2(), edition);
  if (const std::string problem = session.errorSummary(); !problem.empty()) {
    err << "quillpaper: " << problem << "\n";
    return 1;
  }
  out << (json ? form.json() : form.text());
  return session.finish(err);
}

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
    (args.empty() ? err : out) << kUsage;
    return args.empty() ? 2 : 0;
  }
  if (args[0] == "--version") {
    out << kVersion << "\n";
    return 0;
  }
  const std::map<std::string, std::function<int(CommandLine&, std::ostream&, std::ostream&)>> commands = {
      {"form", formCommand},
      {"new", newCommand},
      {"table", tableCommand},
      {"refs", refsCommand},
  };
  auto it = commands.find(args[0]);
  if (it == commands.end()) {
    err << "quillpaper: unknown command '" << args[0] << "'\n\n" << kUsage;
    return 2;
  }
  try {
    CommandLine cl(std::vector<std::string>(args.begin() + 1, args.end()));
    return it->second(cl, out, err);
  } catch (const UsageError& e) {
    err << "quillpaper " << args[0] << ": " << e.what() << "\n";
    return 2;
  }
}

}  // namespace quillpaper
