#include "MemberTable.h"

#include <algorithm>
#include <array>
#include <new>
#include <atomic>
#include <stdexcept>

namespace QuillFormatAPA {

namespace {

std::atomic<uint32_t> nextSerial{1};

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (lowerAscii(a[i]) != lowerAscii(b[i])) return false;
  return true;
}

// The most parameters a member of this library or its hosts declares, with room.
constexpr size_t kMaxParams = 16;

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
    : className_(std::move(className)), members_(std::move(members)), serial_(nextSerial++) {
  for (size_t i = 0; i < members_.size(); ++i) {
    MemberInfo& m = members_[i];
    m.simple = m.get && std::none_of(m.params.begin(), m.params.end(), [](const ParamInfo& p) { return p.paramArray; });
    m.arity = m.params.size();
    if (members_[i].params.size() + 1 > kMaxParams)
      throw std::logic_error("too many parameters: " + members_[i].name);
    // A name declared twice in two cases is the first member's in both.
    if (byName_.emplace(members_[i].name, static_cast<DispId>(i)).second)
      byExactName_.emplace(members_[i].name, static_cast<DispId>(i));
  }
}

// FNV-1a over the lower-case bytes.
size_t MemberTable::NoCaseHash::operator()(std::string_view name) const noexcept {
  uint64_t h = 14695981039346656037ull;
  for (char c : name) h = (h ^ static_cast<unsigned char>(lowerAscii(c))) * 1099511628211ull;
  return static_cast<size_t>(h);
}

bool MemberTable::NoCaseEqual::operator()(std::string_view a, std::string_view b) const noexcept {
  return equalsNoCase(a, b);
}

DispId MemberTable::idOfName(std::string_view name) const noexcept {
  if (auto exact = byExactName_.find(name); exact != byExactName_.end()) return exact->second;
  auto it = byName_.find(name);
  return it == byName_.end() ? kUnknownDispId : it->second;
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
  const bool write = kind == CallKind::PropertyPut;
  // The common call: every parameter given, in order. No binding needed
  // beyond pointing at the arguments, unless one was passed as Missing.
  if (!write && m.simple && args.named().empty() && args.positional().size() == m.arity) {
    Variant* slots[kMaxParams];
    bool complete = true;
    for (size_t i = 0; i < m.arity; ++i) {
      slots[i] = &args.positional()[i];
      complete &= !slots[i]->isMissing();
    }
    if (complete) {
      try {
        m.get(self, slots, result);
        return {};
      } catch (...) {
        return failure(m, std::current_exception());
      }
    }
  }
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
