#include "quillpaper/CommandLine.h"

#include <charconv>

namespace quillpaper {

CommandLine::CommandLine(std::vector<std::string> args) : raw_(std::move(args)) {
  bool onlyPositional = false;
  for (const std::string& a : raw_) {
    if (onlyPositional || a == "-" || !a.starts_with("--")) {
      items_.push_back({"", a, false, onlyPositional});
      continue;
    }
    if (a == "--") {
      onlyPositional = true;
      continue;
    }
    const size_t eq = a.find('=');
    if (eq == std::string::npos)
      items_.push_back({a.substr(2), std::nullopt});
    else
      items_.push_back({a.substr(2, eq - 2), a.substr(eq + 1)});
  }
}

bool CommandLine::flag(const std::string& name) {
  bool found = false;
  for (Item& i : items_)
    if (!i.taken && i.name == name) {
      if (i.value) throw UsageError("--" + name + " takes no value");
      i.taken = found = true;
    }
  return found;
}

std::optional<std::string> CommandLine::option(const std::string& name) {
  std::vector<std::string> all = options(name);
  if (all.size() > 1) throw UsageError("--" + name + " given more than once");
  if (all.empty()) return std::nullopt;
  return all.front();
}

std::vector<std::string> CommandLine::options(const std::string& name) {
  std::vector<std::string> values;
  for (size_t k = 0; k < items_.size(); ++k) {
    Item& i = items_[k];
    if (i.taken || i.name != name) continue;
    i.taken = true;
    if (i.value) {
      values.push_back(*i.value);
      continue;
    }
    // "--name value": the value is the next positional argument.
    if (k + 1 >= items_.size() || !items_[k + 1].name.empty() || items_[k + 1].taken)
      throw UsageError("--" + name + " needs a value");
    items_[k + 1].taken = true;
    values.push_back(*items_[k + 1].value);
  }
  return values;
}

int CommandLine::integer(const std::string& name, int fallback, int min, int max) {
  const std::optional<std::string> text = option(name);
  if (!text) return fallback;
  int value = 0;
  auto [p, ec] = std::from_chars(text->data(), text->data() + text->size(), value);
  if (ec != std::errc() || p != text->data() + text->size() || value < min || value > max)
    throw UsageError("--" + name + " must be a whole number from " + std::to_string(min) + " to " +
                     std::to_string(max) + ", not '" + *text + "'");
  return value;
}

// "/trace" is the library's own switch, read from the process command line:
// no file name, wherever it stands (but after "--").
bool CommandLine::isLibrarySwitch(const Item& i) { return i.name.empty() && !i.literal && i.value == "/trace"; }

std::vector<std::string> CommandLine::positional() {
  std::vector<std::string> out;
  for (Item& i : items_)
    if (!i.taken && i.name.empty() && !isLibrarySwitch(i)) {
      i.taken = true;
      out.push_back(*i.value);
    }
  return out;
}

int CommandLine::edition() {
  const std::optional<std::string> e = option("edition");
  if (!e || *e == "7") return 7;
  if (*e == "6") return 6;
  throw UsageError("--edition must be 6 or 7, not '" + *e + "'");
}

DiagnosticsService::Options CommandLine::diagnostics(const std::vector<std::filesystem::path>& inputs) {
  DiagnosticsService::Options o;
  if (const auto policy = option("on-error")) {
    if (*policy == "exit") o.policy = ErrorPolicy::Exit;
    else if (*policy == "ignore") o.policy = ErrorPolicy::Ignore;
    else if (*policy == "retry") o.policy = ErrorPolicy::Retry;
    else if (*policy == "ask") o.policy = ErrorPolicy::Ask;
    else throw UsageError("--on-error must be exit, ignore, retry or ask, not '" + *policy + "'");
  }
  if (const auto trace = option("trace")) {
    o.traceFile = *trace;
    std::error_code ec;
    for (const std::filesystem::path& input : inputs)
      if (std::filesystem::equivalent(o.traceFile, input, ec))
        throw UsageError("--trace=" + *trace + " is " + input.string() + ", which is being read: the trace would overwrite it");
  }
  if (const auto dumps = option("dump-dir")) o.dumpFolder = *dumps;
  return o;
}

void CommandLine::finish() {
  for (const Item& i : items_) {
    if (i.taken) continue;
    if (isLibrarySwitch(i)) continue;
    if (i.name.empty()) throw UsageError("unexpected argument '" + *i.value + "'");
    throw UsageError("unknown option --" + i.name);
  }
}

}  // namespace quillpaper
