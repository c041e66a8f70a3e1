#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace quillpaper {

// Runs the command line (without the program name); answers the exit status.
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace quillpaper
