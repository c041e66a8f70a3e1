#include "tests/fakes/RecordingObject.h"

#include <algorithm>

#include "strings/StringUtility.h"

namespace QuillFormatAPA::fakes {

namespace {

std::string key(std::string_view name) { return QuillStrings::strings().lower(name); }

std::string valueText(const Variant& v) {
  switch (v.type()) {
    case VarType::String: return "\"" + v.toString() + "\"";
    case VarType::Object: {
      ObjectRef o = v.toObject();
      return o ? std::string(o->typeName()) : "Nothing";
    }
    case VarType::Array: return "Array(" + std::to_string(v.array().size()) + ")";
    case VarType::Missing: return "Missing";
    case VarType::Null: return "Null";
    case VarType::Empty: return "Empty";
    default: return v.toString();
  }
}

}  // namespace

const Variant* RecordedCall::namedArg(std::string_view name) const {
  for (const auto& [n, v] : named)
    if (n == name) return &v;
  return nullptr;
}

std::string RecordedCall::text() const {
  std::string out = member + "(";
  bool first = true;
  auto sep = [&] {
    if (!first) out += ", ";
    first = false;
  };
  for (const Variant& v : positional) sep(), out += valueText(v);
  for (const auto& [n, v] : named) sep(), out += n + ":=" + valueText(v);
  return out + ")";
}

std::vector<std::string> CallLog::texts() const {
  std::vector<std::string> out;
  for (const RecordedCall& c : calls) out.push_back(c.text());
  return out;
}

size_t CallLog::count(std::string_view member) const {
  return static_cast<size_t>(
      std::count_if(calls.begin(), calls.end(), [&](const RecordedCall& c) { return c.member == member; }));
}

RecordingObject::RecordingObject(std::string label, std::shared_ptr<CallLog> log)
    : label_(std::move(label)), log_(std::move(log)) {}

void RecordingObject::answer(std::string_view member, Answer a) { answers_[key(member)] = std::move(a); }

void RecordingObject::answer(std::string_view member, Variant value) {
  answers_[key(member)] = [value](const RecordedCall&, Args&) { return value; };
}

void RecordingObject::lack(std::string_view member) { lacking_.insert(key(member)); }

std::vector<RecordedCall> RecordingObject::callsTo(std::string_view member) const {
  std::vector<RecordedCall> out;
  for (const RecordedCall& c : log_->calls)
    if (c.object == label_ && c.member == member) out.push_back(c);
  return out;
}

DispId RecordingObject::idOfName(std::string_view name) const noexcept {
  if (lacking_.count(key(name))) return kUnknownDispId;
  // Ids keep the spelling of the first call; a later spelling is recorded as is.
  for (size_t i = 0; i < names_.size(); ++i)
    if (key(names_[i]) == key(name)) return static_cast<DispId>(i);
  names_.emplace_back(name);
  return static_cast<DispId>(names_.size() - 1);
}

Status RecordingObject::invoke(DispId id, CallKind kind, Args& args, Variant& result) noexcept {
  if (id < 0 || static_cast<size_t>(id) >= names_.size()) return AutomationError(kUnknownMember, label_);
  try {
    RecordedCall call;
    call.object = label_;
    call.member = names_[static_cast<size_t>(id)];
    call.kind = kind;
    for (const Variant& v : args.positional()) call.positional.push_back(v.deref());
    for (const NamedArg& n : args.named()) call.named.emplace_back(std::string(n.name), n.value.deref());
    log_->calls.push_back(call);
    auto it = answers_.find(key(call.member));
    if (it != answers_.end()) result = it->second(call, args);
    return {};
  } catch (const AutomationError& e) {
    return e;
  }
}

}  // namespace QuillFormatAPA::fakes
