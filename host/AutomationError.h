#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "Export.h"

namespace QuillFormatAPA {

// The run-time error numbers of the automation platform. Hosts written for the
// original platform test these numbers, so they never change.
enum ErrorNumber : int32_t {
  kInvalidProcedureCall = 5,
  kOverflow = 6,
  kOutOfMemory = 7,
  kSubscriptOutOfRange = 9,
  kTypeMismatch = 13,
  kInternalError = 51,
  kFileNotFound = 53,
  kPathFileAccessError = 75,
  kObjectNotSet = 91,
  kInvalidUseOfNull = 94,
  kObjectRequired = 424,
  kCannotCreateObject = 429,
  kUnknownMember = 438,
  kNamedArgumentNotFound = 448,
  kArgumentNotOptional = 449,
  kWrongNumberOfArguments = 450,
  kKeyAlreadyAssociated = 457,
};

// The platform's own description of an error number ("Type mismatch").
QFA_API std::string_view standardDescription(int32_t number) noexcept;

// A run-time error: the platform's number and description, and where it
// happened (`source`: "Main2.IntArray: argument 'words'", say) so that a host
// can tell the user more than the bare description.
class QFA_API AutomationError : public std::exception {
 public:
  explicit AutomationError(int32_t number, std::string source = {});
  AutomationError(int32_t number, std::string description, std::string source);

  int32_t number() const noexcept { return number_; }
  const std::string& description() const noexcept { return description_; }
  const std::string& source() const noexcept { return source_; }
  // The operating system's last error code when the error came from a system call.
  int32_t lastDllError() const noexcept { return lastDllError_; }
  void setLastDllError(int32_t code) noexcept { lastDllError_ = code; }

  // "Type mismatch (Main2.IntArray: argument 'words')"
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  int32_t number_;
  int32_t lastDllError_ = 0;
  std::string description_;
  std::string source_;
  std::string message_;
};

}  // namespace QuillFormatAPA
