// The cost of a job: 10^5 empty jobs added to the standard pool and waited for from the mainline,
// with as many workers as the machine offers (at most 8).
#include <benchmark/benchmark.h>

#include "base/kernel/thread.h"
#include "base/kernel/threadpool.h"

namespace {

constexpr int kJobs = 100000;

void emptyJob(void *) {}

void BM_ThreadPoolEmptyJobs(benchmark::State &state) {
    static bool ready = [] {
        Thread_Init();
        ThreadPoolInit();
        StandardThreadPool = ThreadPoolCreate();
        return ThreadPoolCreateStandardWorkers();
    }();
    if (!ready) {
        state.SkipWithError("no thread pool");
        return;
    }
    for (auto _ : state) {
        JobControl_s *control = nullptr;
        InitJobControl(&control);
        for (int n = 0; n < kJobs; n++) ThreadPoolAddJob(StandardThreadPool, emptyJob, nullptr, control);
        ThreadPoolWait(StandardThreadPool, control);
        FreeJobControl(&control);
    }
    state.SetItemsProcessed(state.iterations() * kJobs);
    state.counters["time_per_job"] =
        benchmark::Counter(double(state.iterations()) * kJobs, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

}  // namespace

BENCHMARK(BM_ThreadPoolEmptyJobs)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true)->UseRealTime();
