// What the label rules cost: one pattern compiled once against compiled at each use, and a whole
// scan of a page as large as the node budget allows. Compare the figures of one run with each
// other; figures of different runs or machines say little.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "evidence/label_rules.h"
#include "evidence/label_scan.h"
#include "evidence/snapshot.h"
#include "fixtures/synthetic_tree.h"

namespace callmonitor {
namespace {

const std::vector<std::string>& typicalLabels() {
  static const std::vector<std::string> labels{"Leave call",
                                               "Turn off microphone (ctrl + d)",
                                               "QA Person",
                                               "More actions",
                                               "In-call messages",
                                               "Ask to join",
                                               "Présentation de l’équipe",
                                               ""};
  return labels;
}

void normalizeAndMatch(benchmark::State& state) {
  for (auto _ : state) {
    for (const std::string& label : typicalLabels()) {
      benchmark::DoNotOptimize(matches(normalized(label), leaveControlPattern));
    }
  }
}
BENCHMARK(normalizeAndMatch);

void normalizeAndMatchCompiledPerUse(benchmark::State& state) {
  for (auto _ : state) {
    for (const std::string& label : typicalLabels()) {
      const Pattern pattern("^(leave( (call|meeting))?|hang up|end( (call|meeting))?)$");
      benchmark::DoNotOptimize(matches(normalized(label), pattern));
    }
  }
}
BENCHMARK(normalizeAndMatchCompiledPerUse);

// A page of 16 groups with 98 buttons each: 1585 elements, below every bound.
SyntheticTree largePage() {
  SyntheticTree tree;
  std::vector<NodeKey> groups;
  for (int g = 0; g < 16; ++g) {
    std::vector<NodeKey> buttons;
    for (int b = 0; b < 98; ++b) {
      const std::string key = "button" + std::to_string(g) + "." + std::to_string(b);
      tree[key].values = {{"AXRole", "AXButton"},
                          {"AXTitle", typicalLabels()[static_cast<std::size_t>(b) % 8]}};
      buttons.push_back({key});
    }
    const std::string key = "group" + std::to_string(g);
    tree[key].values = {{"AXRole", "AXGroup"}, {"AXChildren", buttons}};
    groups.push_back({key});
  }
  tree["page"].values = {{"AXRole", "AXWebArea"}, {"AXChildren", groups}};
  return tree;
}

void scanLargePage(benchmark::State& state) {
  const SyntheticTree tree = largePage();
  for (auto _ : state) {
    const Evidence evidence = scanLabels(
        NodeKey{"page"}, /*browser=*/true, /*nativeZoomWindow=*/false, labelScanBudget,
        [] { return true; },
        [&](const NodeKey& node) {
          return readLabelSnapshot(
                     node, false, false, node.key == "page", [](const std::string&) {},
                     [&](const NodeKey& key, std::string_view name) {
                       return readSynthetic(tree, key, name);
                     })
              .snapshot;
        });
    if (!evidence.complete) state.SkipWithError("the page must fit the budget");
  }
}
BENCHMARK(scanLargePage)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace callmonitor

BENCHMARK_MAIN();
