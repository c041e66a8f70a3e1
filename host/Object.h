#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

#include "AutomationError.h"
#include "Export.h"
#include "Ref.h"

namespace QuillFormatAPA {

class Args;
class MemberTable;
class Variant;

// How a member is invoked; a caller that evaluates an expression passes
// Method | PropertyGet, since the platform lets either answer it.
enum class CallKind : uint8_t { Method = 1, PropertyGet = 2, PropertyPut = 4 };
constexpr CallKind operator|(CallKind a, CallKind b) {
  return static_cast<CallKind>(static_cast<uint8_t>(a) | static_cast<uint8_t>(b));
}
constexpr bool has(CallKind set, CallKind k) {
  return (static_cast<uint8_t>(set) & static_cast<uint8_t>(k)) != 0;
}

// A member id, valid for the object (and, for objects with a member table,
// for every object of the same class).
using DispId = int32_t;
constexpr DispId kUnknownDispId = -1;

// The outcome of a late-bound call. Errors travel as values across the object
// boundary so that no exception ever passes between library and host.
class QFA_API Status {
 public:
  Status() noexcept = default;
  Status(AutomationError error) : error_(std::make_unique<AutomationError>(std::move(error))) {}
  Status(Status&&) noexcept = default;
  Status& operator=(Status&&) noexcept = default;

  bool ok() const noexcept { return !error_; }
  const AutomationError& error() const noexcept { return *error_; }
  // Raises the error, if any, as a C++ exception on the calling side.
  void throwIfFailed() const {
    if (error_) throw *error_;
  }

 private:
  std::unique_ptr<AutomationError> error_;
};

// The late-bound interface every object of the library and of its host offers.
class QFA_API Object {
 public:
  Object() noexcept = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object();

  void addRef() const noexcept { refs_.fetch_add(1, std::memory_order_relaxed); }
  void release() const noexcept {
    if (refs_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  // The class's member table when all objects of the class share one (ids
  // may then be cached per class, and a caller may invoke through the table
  // itself); null for objects whose members vary.
  const MemberTable* memberTable() const noexcept { return table_; }
  // A number shared by the objects whose members have the same ids for good,
  // none of them changing while any lives (objects with a member table share
  // their table's); a caller may then cache an id per scope. 0: ids must be
  // asked of the object each time.
  virtual uint64_t idScope() const noexcept;
  // The id of a member, case-insensitively, or kUnknownDispId.
  virtual DispId idOfName(std::string_view name) const noexcept;
  // Invokes a member. Positional arguments come first to last; for a property
  // write the value is the last positional argument.
  [[nodiscard]] virtual Status invoke(DispId id, CallKind kind, Args& args, Variant& result) noexcept = 0;
  // The class name a dump or a type library shows.
  virtual std::string_view typeName() const noexcept;

 protected:
  // For a class whose objects share a member table: set once, when made.
  explicit Object(const MemberTable* table) noexcept : table_(table) {}

 private:
  const MemberTable* table_ = nullptr;
  mutable std::atomic<int32_t> refs_{0};
};

using ObjectRef = Ref<Object>;

// A new id scope, never handed out before (from 1 up).
QFA_API uint64_t newIdScope() noexcept;

}  // namespace QuillFormatAPA
