#include "command/ClassFactory.h"

#include <array>

#include "command/Main2.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA {

namespace {

struct Creatable {
  std::string_view name;
  ObjectRef (*create)();
};

const std::array kClasses{
    Creatable{"QuillFormatAPA.Main2", [] { return ObjectRef(Main2::create()); }},
};

const std::array<std::string_view, kClasses.size()> kNames = [] {
  std::array<std::string_view, kClasses.size()> names{};
  for (size_t i = 0; i < kClasses.size(); ++i) names[i] = kClasses[i].name;
  return names;
}();

}  // namespace

std::span<const std::string_view> classNames() noexcept { return kNames; }

ObjectRef createObject(std::string_view className) {
  for (const Creatable& c : kClasses)
    if (QuillStrings::strings().equalsIgnoreCase(c.name, className)) return c.create();
  return ObjectRef();
}

}  // namespace QuillFormatAPA
