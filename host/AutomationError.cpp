#include "AutomationError.h"

#include <array>
#include <utility>

namespace QuillFormatAPA {

namespace {

struct Description {
  int32_t number;
  std::string_view text;
};

// The texts are the platform's, letter for letter.
constexpr std::array kDescriptions{
    Description{kInvalidProcedureCall, "Invalid procedure call or argument"},
    Description{kOverflow, "Overflow"},
    Description{kOutOfMemory, "Out of memory"},
    Description{kSubscriptOutOfRange, "Subscript out of range"},
    Description{kTypeMismatch, "Type mismatch"},
    Description{kInternalError, "Internal error"},
    Description{kFileNotFound, "File not found"},
    Description{kPathFileAccessError, "Path/File access error"},
    Description{kObjectNotSet, "Object variable or With block variable not set"},
    Description{kInvalidUseOfNull, "Invalid use of Null"},
    Description{kObjectRequired, "Object required"},
    Description{kCannotCreateObject, "ActiveX component can't create object"},
    Description{kUnknownMember, "Object doesn't support this property or method"},
    Description{kNamedArgumentNotFound, "Named argument not found"},
    Description{kArgumentNotOptional, "Argument not optional"},
    Description{kWrongNumberOfArguments, "Wrong number of arguments or invalid property assignment"},
    Description{kKeyAlreadyAssociated, "This key is already associated with an element of this collection"},
};

std::string composeMessage(const std::string& description, const std::string& source) {
  if (source.empty()) return description;
  return description + " (" + source + ")";
}

}  // namespace

std::string_view standardDescription(int32_t number) noexcept {
  for (const auto& d : kDescriptions)
    if (d.number == number) return d.text;
  return "Application-defined or object-defined error";
}

AutomationError::AutomationError(int32_t number, std::string source)
    : AutomationError(number, std::string(standardDescription(number)), std::move(source)) {}

AutomationError::AutomationError(int32_t number, std::string description, std::string source)
    : number_(number),
      description_(std::move(description)),
      source_(std::move(source)),
      message_(composeMessage(description_, source_)) {}

}  // namespace QuillFormatAPA
