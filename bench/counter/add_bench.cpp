// The cost of one Add press with all its effects (lock, click, count, labels, tracker, wheels)
// on the deterministic platform, whose recording is part of the measured cost. Target: < 50 us.
#include <benchmark/benchmark.h>

#include "sim/simulation.h"

namespace {

using zellick::sim::Process;
using zellick::sim::Simulation;

void BM_AddPress(benchmark::State& state) {
  Simulation sim;
  Process& p = sim.start();
  sim.wait(1);
  int64_t n = 0;
  for (auto _ : state) {
    p.press("ButtonAdd");
    p.release("ButtonAdd");
    if (++n % 256 == 0) {
      state.PauseTiming();
      sim.wait(1);  // let the follow-up timers fire so the queue stays short
      state.ResumeTiming();
    }
  }
  benchmark::DoNotOptimize(p.controller().total);
  state.SetLabel("press + release");
}
BENCHMARK(BM_AddPress);

// The controller's Add alone, as the button's press action calls it.
void BM_AddAction(benchmark::State& state) {
  Simulation sim;
  Process& p = sim.start();
  sim.wait(1);
  auto& c = p.controller();
  int64_t n = 0;
  for (auto _ : state) {
    c.Add();
    if (++n % 256 == 0) {
      state.PauseTiming();
      c.PlayLetUpSound();
      sim.wait(1);
      state.ResumeTiming();
    }
  }
  benchmark::DoNotOptimize(c.total);
}
BENCHMARK(BM_AddAction);

}  // namespace

BENCHMARK_MAIN();
