// What it costs to find an element's identifier among few and among many: the figures of one run
// should be of one size, because identifiers accumulate and look-ups happen in every cycle.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "evidence/element_registry.h"
#include "platform/scripted/desktop.h"

namespace callmonitor {
namespace {

void findIdentifier(benchmark::State& state) {
  scripted::reset();
  ElementRegistry registry;
  std::vector<platform::Element> pages;
  for (int i = 0; i < state.range(0); ++i) {
    pages.push_back(scripted::element("page" + std::to_string(i)));
    static_cast<void>(elementID(registry, pages.back()));
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(elementID(registry, pages[next]));
    next = (next + 1) % pages.size();
  }
}
BENCHMARK(findIdentifier)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);

}  // namespace
}  // namespace callmonitor

BENCHMARK_MAIN();
