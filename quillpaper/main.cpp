// quillpaper: writes APA papers, reference lists and statistics tables with
// the QuillFormatAPA library.
#include <cstdio>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/AutomationError.h"
#include "quillpaper/Commands.h"
#include "quillpaper/OutputFile.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  int status = 1;
  try {
    status = quillpaper::run(args, std::cout, std::cerr);
  } catch (const QuillFormatAPA::AutomationError& e) {
    std::cerr << "quillpaper: " << e.what() << "\n";
  } catch (const std::exception& e) {
    std::cerr << "quillpaper: " << e.what() << "\n";
  }
  // What standard output did not take is a failure too ("> /dev/full").
  if (const std::string problem = quillpaper::standardOutputProblem(); !problem.empty()) {
    std::cerr << "quillpaper: cannot write to standard output: " << problem << "\n";
    return 1;
  }
  return status;
}
