#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/Args.h"
#include "host/Array.h"
#include "host/Object.h"
#include "host/Variant.h"

namespace QuillFormatAPA::fakes {

// One late-bound call as a host object received it.
struct RecordedCall {
  std::string object;  // the label of the object called
  std::string member;  // the member name as the caller spelled it
  CallKind kind = CallKind::Method;
  std::vector<Variant> positional;
  std::vector<std::pair<std::string, Variant>> named;

  const Variant* namedArg(std::string_view name) const;
  // "member(arg, arg, name:=arg)", values in their text form, strings quoted.
  std::string text() const;
};

// Calls of several recording objects in the order they happened.
struct CallLog {
  std::vector<RecordedCall> calls;
  std::vector<std::string> texts() const;
  size_t count(std::string_view member) const;
};

// A host object that records every call and answers from a script. Members
// it is told to lack raise the unknown-member error, as a real object would.
class RecordingObject : public Object {
 public:
  // An answer may read and write the arguments (by-reference ones included)
  // and raise AutomationError to make the call fail.
  using Answer = std::function<Variant(const RecordedCall& call, Args& args)>;

  explicit RecordingObject(std::string label, std::shared_ptr<CallLog> log = std::make_shared<CallLog>());

  void answer(std::string_view member, Answer a);
  void answer(std::string_view member, Variant value);
  void lack(std::string_view member);

  const std::shared_ptr<CallLog>& log() const { return log_; }
  std::vector<RecordedCall> callsTo(std::string_view member) const;

  DispId idOfName(std::string_view name) const noexcept override;
  Status invoke(DispId id, CallKind kind, Args& args, Variant& result) noexcept override;
  std::string_view typeName() const noexcept override { return label_; }

 private:
  std::string label_;
  std::shared_ptr<CallLog> log_;
  mutable std::vector<std::string> names_;  // member ids in order of first use
  std::map<std::string, Answer> answers_;
  std::set<std::string> lacking_;
};

}  // namespace QuillFormatAPA::fakes
