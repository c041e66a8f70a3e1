// What a host pays to use the library through its C interface: one call into
// a library object (Main2.buildInstruction, a traced procedure), and one call
// from the library's side into a host object made of C callbacks.
#include <benchmark/benchmark.h>
#include <strings.h>

#include <cstdlib>
#include <cstring>

#include "server/quillformatapa.h"

namespace {

const char* const kMembers[] = {"ErrorParams", "vbwProcIn", "vbwProcOut", "add"};
qfa_object* service = nullptr;
int64_t total = 0;

int32_t idOfName(void*, const char* name) {
  for (int32_t i = 0; i < 4; ++i)
    if (strcasecmp(name, kMembers[i]) == 0) return i;
  return -1;
}

// One object is the bridge, the service that does nothing, and a counter.
int32_t invoke(void*, int32_t id, int32_t, qfa_variant* const* args, size_t argc, const char* const*, size_t,
               qfa_variant* result) {
  if (id == 0) qfa_variant_set_object(result, service);
  if (id == 3 && argc == 1) {
    int32_t n = 0;
    qfa_variant_get_long(args[0], &n);
    total += n;
    qfa_variant_set_long(result, static_cast<int32_t>(total));
  }
  return 0;
}

const bool kSetUp = [] {
  ::setenv("XDG_CONFIG_HOME", "/nonexistent", 1);  // parameter tracing stays off
  static const qfa_host_vtable vtable{idOfName, invoke, nullptr, nullptr};
  service = qfa_host_object_new(&vtable, nullptr);
  return qfa_register_running_object("QuillPaperDot.BridgeToVB", service) == QFA_OK;
}();

void BM_CallLibraryObject(benchmark::State& state) {
  qfa_object* main2 = nullptr;
  if (!kSetUp || qfa_create_object("QuillFormatAPA.Main2", &main2) != QFA_OK) {
    state.SkipWithError(qfa_error_description());
    return;
  }
  qfa_variant* caption = qfa_variant_new();
  qfa_variant* code = qfa_variant_new();
  qfa_variant* result = qfa_variant_new();
  qfa_variant_set_string(caption, "Abstract", 8);
  qfa_variant_set_integer(code, 7);
  qfa_variant* args[] = {caption, code};
  for (auto _ : state) benchmark::DoNotOptimize(qfa_invoke(main2, "buildInstruction", QFA_METHOD, args, 2, nullptr, 0, result));
  qfa_variant_free(caption);
  qfa_variant_free(code);
  qfa_variant_free(result);
  qfa_object_release(main2);
}
BENCHMARK(BM_CallLibraryObject);

void BM_CallHostObject(benchmark::State& state) {
  qfa_variant* one = qfa_variant_new();
  qfa_variant* result = qfa_variant_new();
  qfa_variant_set_long(one, 1);
  qfa_variant* args[] = {one};
  for (auto _ : state) benchmark::DoNotOptimize(qfa_invoke(service, "add", QFA_METHOD, args, 1, nullptr, 0, result));
  qfa_variant_free(one);
  qfa_variant_free(result);
}
BENCHMARK(BM_CallHostObject);

}  // namespace
