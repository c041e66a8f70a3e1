// The cost of the plumbing every library procedure pays: a traced procedure
// against a service that does nothing, and one late-bound call.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "diagnostics/Procedure.h"
#include "host/CallSite.h"
#include "host/MemberTable.h"
#include "host/RunningObjects.h"

namespace QuillFormatAPA {
namespace {

class NoopService : public Dispatchable<NoopService> {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<NoopService>("NoopService")
                                  .method<&NoopService::vbwProcIn>("vbwProcIn", {"name", "parameterText"})
                                  .method<&NoopService::vbwProcOut>("vbwProcOut")
                                  .build();
    return table;
  }
  void vbwProcIn(const Variant&, const Variant&) {}
  void vbwProcOut() {}
};

class Bridge : public Dispatchable<Bridge> {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<Bridge>("Bridge").get<&Bridge::ErrorParams>("ErrorParams").build();
    return table;
  }
  ObjectRef ErrorParams() { return service; }
  ObjectRef service = make<NoopService>();
};

class Counter : public Dispatchable<Counter> {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<Counter>("Counter").method<&Counter::add>("add", {"n"}).build();
    return table;
  }
  int32_t add(int32_t n) { return total += n; }
  int32_t total = 0;
};

const StaticModule kModule("Bench");

int32_t tracedProcedure(int32_t x) {
  return traced(kModule, "tracedProcedure", params(arg("x", x)), [&](Procedure& proc) {
    int32_t y = 0;
    proc.local("y", y);
    proc.step([&] { y = x + 1; });
    return y;
  });
}

// Parameter tracing stays off: no settings file, no "/trace".
const bool kSetUp = [] {
  ::setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
  RunningObjects::registerObject("QuillPaperDot.BridgeToVB", make<Bridge>());
  return true;
}();

void BM_TracedProcedure(benchmark::State& state) {
  int32_t x = 0;
  for (auto _ : state) benchmark::DoNotOptimize(x = tracedProcedure(x));
}
BENCHMARK(BM_TracedProcedure);

void BM_LateBoundCall(benchmark::State& state) {
  ObjectRef counter = make<Counter>();
  static const CallSite add("add");
  for (auto _ : state) benchmark::DoNotOptimize(add.call(counter, int32_t{1}));
}
BENCHMARK(BM_LateBoundCall);

void BM_LateBoundCallByName(benchmark::State& state) {
  ObjectRef counter = make<Counter>();
  for (auto _ : state) benchmark::DoNotOptimize(callByName(counter, "add", int32_t{1}));
}
BENCHMARK(BM_LateBoundCallByName);

}  // namespace
}  // namespace QuillFormatAPA
