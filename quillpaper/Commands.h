#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace quillpaper {

class CommandLine;

// Runs the command line (without the program name); answers the exit status.
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

// The commands, each given its own arguments.
int newCommand(CommandLine& cl, std::ostream& out, std::ostream& err);
int formCommand(CommandLine& cl, std::ostream& out, std::ostream& err);
int tableCommand(CommandLine& cl, std::ostream& out, std::ostream& err);
int refsCommand(CommandLine& cl, std::ostream& out, std::ostream& err);

}  // namespace quillpaper
