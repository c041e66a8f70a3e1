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

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  try {
    return quillpaper::run(args, std::cout, std::cerr);
  } catch (const QuillFormatAPA::AutomationError& e) {
    std::cerr << "quillpaper: " << e.what() << "\n";
  } catch (const std::exception& e) {
    std::cerr << "quillpaper: " << e.what() << "\n";
  }
  return 1;
}
