// Arbitrary late-bound calls through the C interface: any public class, any
// member, any call kind, arguments of any type, positional, named or by
// reference (cycles among them included), arrays with any bounds, and the
// diagnostics bridge registered again between calls. Every call must come
// back with 0 or an error number, and once the host has let go of everything
// no library object may be left alive.
#include <strings.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "command/ClassFactory.h"
#include "server/quillformatapa.h"

namespace {

class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool empty() const { return at_ >= size_; }
  uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
  std::string text() {
    const size_t n = std::min<size_t>(byte(), size_ - std::min(at_, size_));
    std::string out(reinterpret_cast<const char*>(data_ + at_), n);
    at_ += n;
    return out;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

// The diagnostics bridge and service, and the stand-in for every template
// object: it answers any member with nothing, except the bridge's ErrorParams
// and the service's vbwAfterDump (leave the failing procedure).
qfa_object* host = nullptr;

int32_t idOfName(void*, const char* name) {
  if (strcasecmp(name, "ErrorParams") == 0) return 1;
  if (strcasecmp(name, "vbwAfterDump") == 0) return 2;
  return 0;
}

int32_t invoke(void*, int32_t id, int32_t, qfa_variant* const*, size_t, const char* const*, size_t,
               qfa_variant* result) {
  if (id == 1) qfa_variant_set_object(result, host);
  if (id == 2) qfa_variant_set_long(result, 1);
  return 0;
}

const qfa_host_vtable kVtable{idOfName, invoke, nullptr, nullptr};

// One argument of the type the input picks.
void fill(qfa_variant* v, Input& in, std::vector<qfa_variant*>& owned) {
  switch (in.byte() % 11) {
    case 0: qfa_variant_set_empty(v); break;
    case 1: qfa_variant_set_missing(v); break;
    case 2: qfa_variant_set_null(v); break;
    case 3: qfa_variant_set_bool(v, in.byte() & 1); break;
    case 4: qfa_variant_set_integer(v, static_cast<int16_t>(in.byte() << 8 | in.byte())); break;
    case 5: qfa_variant_set_long(v, static_cast<int32_t>(in.byte() << 24 | in.byte() << 8 | in.byte())); break;
    case 6: qfa_variant_set_double(v, static_cast<int8_t>(in.byte()) * 1.5e3); break;
    case 7: qfa_variant_set_object(v, (in.byte() & 1) ? host : nullptr); break;
    case 8: {
      // Small arrays mostly; now and then bounds at the ends of the 32-bit range.
      const bool extreme = in.byte() % 8 == 0;
      const int32_t lower = extreme ? (in.byte() & 1 ? INT32_MAX - in.byte() : INT32_MIN + in.byte())
                                    : static_cast<int8_t>(in.byte()) % 3;
      qfa_variant_set_array(v, lower, in.byte() % 16);
      break;
    }
    case 9: {  // by reference to a value of its own, or to one made before (a cycle, perhaps)
      if (!owned.empty() && in.byte() % 4 == 0) {
        qfa_variant_set_byref(v, owned[in.byte() % owned.size()]);
        break;
      }
      qfa_variant* target = qfa_variant_new();
      owned.push_back(target);
      fill(target, in, owned);
      qfa_variant_set_byref(v, target);
      break;
    }
    default: {
      const std::string t = in.text();
      qfa_variant_set_string(v, t.data(), t.size());
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  host = qfa_host_object_new(&kVtable, nullptr);
  if (qfa_register_running_object("QuillPaperDot.BridgeToVB", host) != QFA_OK) std::abort();
  Input in(data, size);
  const auto classes = QuillFormatAPA::publicClasses();
  const QuillFormatAPA::PublicClass& publicClass = classes[in.byte() % classes.size()];
  qfa_object* object = nullptr;
  if (qfa_create_object(std::string(publicClass.name).c_str(), &object) != QFA_OK) std::abort();
  const auto members = publicClass.members().members();

  for (int call = 0; call < 4 && !in.empty(); ++call) {
    const auto& member = members[in.byte() % members.size()];
    const std::string name = (in.byte() % 16 == 0) ? in.text() : member.name;
    const int32_t kind = 1 + in.byte() % 7;
    const size_t argc = in.byte() % 9;
    const size_t namedCount = std::min<size_t>(argc, in.byte() % 3);
    std::vector<qfa_variant*> owned, args;
    std::vector<std::string> nameTexts;
    for (size_t i = 0; i < argc; ++i) {
      args.push_back(qfa_variant_new());
      owned.push_back(args.back());
      fill(args.back(), in, owned);
    }
    for (size_t k = 0; k < namedCount; ++k) {
      const uint8_t pick = in.byte();
      nameTexts.push_back(member.params.empty() || pick % 5 == 0 ? in.text()
                                                                : member.params[pick % member.params.size()].name);
    }
    std::vector<const char*> names;
    for (const std::string& n : nameTexts) names.push_back(n.c_str());
    qfa_variant* result = qfa_variant_new();
    owned.push_back(result);
    const int32_t number =
        qfa_invoke(object, name.c_str(), kind, args.data(), argc, names.data(), names.size(), result);
    if (number < 0) std::abort();
    for (qfa_variant* v : owned) qfa_variant_free(v);
    // The host registers its bridge again, as a host that restarts its service does.
    if (in.byte() % 8 == 0 && qfa_register_running_object("QuillPaperDot.BridgeToVB", host) != QFA_OK) std::abort();
  }
  qfa_object_release(object);
  qfa_thread_done();
  qfa_revoke_running_object("QuillPaperDot.BridgeToVB");
  qfa_object_release(host);
  if (!DllCanUnloadNow()) std::abort();  // something the calls made was never released
  return 0;
}
