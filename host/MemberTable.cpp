#include "MemberTable.h"

#include <algorithm>
#include <array>
#include <new>
#include <atomic>
#include <stdexcept>

namespace QuillFormatAPA {

namespace {

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr size_t kMaxParams = MemberTable::kMaxParams;

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  if (a == b) return true;  // names are mostly spelt as declared
  for (size_t i = 0; i < a.size(); ++i)
    if (lowerAscii(a[i]) != lowerAscii(b[i])) return false;
  return true;
}

}  // namespace

std::string TypeDesc::name() const {
  if (none) return "void";
  std::string base = type == VarType::Empty ? "Variant" : std::string(typeName(type));
  return isArray ? base + "()" : base;
}

namespace detail {
void checkArity(std::string_view member, size_t declared, size_t expected) {
  if (declared != expected)
    throw std::logic_error("member " + std::string(member) + " declares " + std::to_string(declared) +
                           " parameters for a C++ signature of " + std::to_string(expected));
}
}  // namespace detail

MemberTable::MemberTable(std::string className, std::vector<MemberInfo> members)
    : className_(std::move(className)), members_(std::move(members)), serial_(newIdScope()) {
  for (MemberInfo& m : members_) {
    m.simple = m.get && std::none_of(m.params.begin(), m.params.end(), [](const ParamInfo& p) { return p.paramArray; });
    m.arity = m.params.size();
    if (m.params.size() + 1 > kMaxParams) throw std::logic_error("too many parameters: " + m.name);
  }
  // Twice as many slots as members, a power of two; each slot's ids in dispatch order.
  size_t slots = 2;
  while (slots < 2 * members_.size()) slots *= 2;
  std::vector<std::vector<DispId>> bySlot(slots);
  for (size_t i = 0; i < members_.size(); ++i)
    bySlot[slotOf(members_[i].name, slots - 1)].push_back(static_cast<DispId>(i));
  slotStart_.reserve(slots + 1);
  for (const std::vector<DispId>& ids : bySlot) {
    slotStart_.push_back(static_cast<uint32_t>(slotIds_.size()));
    slotIds_.insert(slotIds_.end(), ids.begin(), ids.end());
  }
  slotStart_.push_back(static_cast<uint32_t>(slotIds_.size()));
}

size_t MemberTable::slotOf(std::string_view name, size_t mask) noexcept {
  if (name.empty()) return 0;
  const size_t n = name.size();
  const auto at = [&](size_t i) { return static_cast<size_t>(static_cast<unsigned char>(lowerAscii(name[i]))); };
  return ((n * 0x9E3779B1u + at(0) * 0x85EBCA77u + at(n - 1) * 0xC2B2AE3Du + at(n / 2) * 0x27D4EB2Fu) >> 7) & mask;
}

// A name declared twice in two cases is the first member's in both.
DispId MemberTable::idOfName(std::string_view name) const noexcept {
  const size_t slot = slotOf(name, slotStart_.size() - 2);
  for (uint32_t k = slotStart_[slot]; k < slotStart_[slot + 1]; ++k)
    if (equalsNoCase(members_[static_cast<size_t>(slotIds_[k])].name, name)) return slotIds_[k];
  return kUnknownDispId;
}

namespace {

struct BindFailure {
  AutomationError error;
};

[[noreturn]] void fail(int32_t number, std::string what) {
  throw BindFailure{AutomationError(number, std::move(what))};
}

// Values the binder supplies itself (defaults, a gathered parameter array),
// constructed only when needed: most calls need none.
class ExtraValues {
 public:
  ExtraValues() noexcept {}
  ExtraValues(const ExtraValues&) = delete;
  ExtraValues& operator=(const ExtraValues&) = delete;
  ~ExtraValues() {
    for (size_t i = 0; i < count_; ++i) std::launder(reinterpret_cast<Variant*>(storage_[i]))->~Variant();
  }
  Variant* add(Variant v) { return new (storage_[count_++]) Variant(std::move(v)); }

 private:
  alignas(Variant) unsigned char storage_[kMaxParams][sizeof(Variant)];
  size_t count_ = 0;
};

// Puts each argument of `args` into the slot of its formal parameter.
// `formal` lists the parameters; for a property write the value comes last.
class Binder {
 public:
  Binder(std::span<const ParamInfo> formal, bool withValue, Args& args)
      : formal_(formal), withValue_(withValue), args_(args) {}

  // Raises BindFailure; the caller adds which member it was.
  Variant* const* bind() {
    std::span<Variant> positional = args_.positional();
    if (withValue_) {
      if (positional.empty()) fail(kArgumentNotOptional, "value");
      slots_[formal_.size()] = &positional.back();
      positional = positional.first(positional.size() - 1);
    }
    std::fill_n(slots_, formal_.size(), nullptr);
    const bool hasParamArray = !formal_.empty() && formal_.back().paramArray;
    const size_t fixed = hasParamArray ? formal_.size() - 1 : formal_.size();
    if (positional.size() > fixed && !hasParamArray)
      fail(kWrongNumberOfArguments,
           std::to_string(positional.size()) + " arguments for " + std::to_string(fixed));
    const size_t nPositional = std::min(positional.size(), fixed);
    for (size_t i = 0; i < nPositional; ++i) slots_[i] = &positional[i];
    if (hasParamArray) {
      std::vector<Variant> rest;
      for (size_t i = fixed; i < positional.size(); ++i) rest.push_back(positional[i].deref());
      slots_[fixed] = extras_.add(Array::list(rest));
    }
    for (NamedArg& named : args_.named()) {
      const size_t i = indexOf(named.name);
      if (i == formal_.size())
        fail(kNamedArgumentNotFound, std::string(named.name));
      if (slots_[i]) fail(kWrongNumberOfArguments, std::string(named.name) + " given twice");
      slots_[i] = &named.value;
    }
    for (size_t i = 0; i < formal_.size(); ++i) {
      if (slots_[i] && !slots_[i]->isMissing()) continue;
      if (!formal_[i].optional)
        fail(kArgumentNotOptional, "argument '" + formal_[i].name + "'");
      slots_[i] = extras_.add(formal_[i].defaultValue);
    }
    return slots_;
  }

 private:
  size_t indexOf(std::string_view name) const {
    for (size_t i = 0; i < formal_.size(); ++i)
      if (equalsNoCase(formal_[i].name, name)) return i;
    return formal_.size();
  }

  std::span<const ParamInfo> formal_;
  bool withValue_;
  Args& args_;
  // Left uninitialised: a call touches only as many slots as the member has.
  Variant* slots_[kMaxParams];
  ExtraValues extras_;
};

}  // namespace

Status MemberTable::invoke(Object& self, DispId id, CallKind kind, Args& args,
                           Variant& result) const noexcept {
  if (id < 0 || static_cast<size_t>(id) >= members_.size())
    return AutomationError(kUnknownMember, className_);
  const MemberInfo& m = members_[static_cast<size_t>(id)];
  if (Variant* slots[kMaxParams]; inPlace(m, kind, args, slots)) {
    try {
      m.get(self, slots, result);
      return {};
    } catch (...) {
      return failure(m, std::current_exception());
    }
  }
  return invokeBound(self, m, kind == CallKind::PropertyPut, args, result);
}

// Kept apart from invoke(), so that the common call does not pay for the binder's room.
Status MemberTable::invokeBound(Object& self, const MemberInfo& m, bool write, Args& args,
                                Variant& result) const noexcept {
  try {
    detail::Thunk fn = write ? m.put : m.get;
    if (!fn) fail(kWrongNumberOfArguments, "cannot be assigned");
    Binder binder(m.params, write, args);
    fn(self, binder.bind(), result);
    return {};
  } catch (...) {
    return failure(m, std::current_exception());
  }
}

Status MemberTable::failure(const MemberInfo& m, std::exception_ptr error) const noexcept {
  const auto where = [&] { return className_ + "." + m.name; };
  try {
    try {
      std::rethrow_exception(error);
    } catch (const BindFailure& e) {
      return AutomationError(e.error.number(), e.error.description(), where() + ": " + e.error.source());
    } catch (const detail::BindError& e) {
      const std::string name = e.index < m.params.size() ? m.params[e.index].name : std::string("value");
      return AutomationError(e.error.number(), e.error.description(),
                             where() + ": argument '" + name + "'" +
                                 (e.error.source().empty() ? "" : ": " + e.error.source()));
    } catch (const AutomationError& e) {
      return e;
    } catch (const std::bad_alloc&) {
      return AutomationError(kOutOfMemory, where());
    } catch (const std::exception& e) {
      return AutomationError(kInternalError, where() + ": " + e.what());
    } catch (...) {
      return AutomationError(kInternalError, where());
    }
  } catch (...) {
    // Saying where ran out of memory.
    return AutomationError(kOutOfMemory);
  }
}

}  // namespace QuillFormatAPA
