#pragma once

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "quillpaper/DiagnosticsService.h"

namespace quillpaper {

// A mistake on the command line; the message says what was wrong.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The arguments of one command: options "--name", "--name=value" or
// "--name value", and positional arguments. Each option is taken once by the
// command; finish() rejects whatever is left.
class CommandLine {
 public:
  explicit CommandLine(std::vector<std::string> args);

  bool flag(const std::string& name);
  std::optional<std::string> option(const std::string& name);
  std::vector<std::string> options(const std::string& name);  // repeatable
  int integer(const std::string& name, int fallback, int min, int max);
  // --edition=6|7: the APA edition asked for; 7, the current one, by default.
  int edition();
  std::vector<std::string> positional();
  // The diagnostics options; a trace that would overwrite one of `inputs`
  // (the reference list being read) is refused.
  DiagnosticsService::Options diagnostics(const std::vector<std::filesystem::path>& inputs = {});
  // Raises UsageError for any option no one took.
  void finish();

 private:
  struct Item {
    std::string name;  // empty for a positional argument
    std::optional<std::string> value;
    bool taken = false;
    bool literal = false;  // after "--": never a switch
  };
  static bool isLibrarySwitch(const Item& i);
  std::vector<Item> items_;
  std::vector<std::string> raw_;
};

}  // namespace quillpaper
