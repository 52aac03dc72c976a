// Summing 10^8 float values: a raw loop over a plain array, the direct-pointer fast path that
// drawing code takes (compare the get function, then index Data), and the general path through
// the get function, one indirect call per value.
#include <benchmark/benchmark.h>

#include <vector>

#include "base/data/fielddata.h"

namespace {

constexpr LgIndex_t kNumValues = 100000000;

FieldData_a makeValues() {
    static FieldData_a fieldData = [] {
        FieldData_a fd = AllocScratchNodalFieldDataPtr(kNumValues, FieldDataType_Float, true);
        auto *values = static_cast<float *>(fd->Data);
        for (LgIndex_t n = 0; n < kNumValues; n++) values[n] = float(n % 1000) * 0.5f;
        return fd;
    }();
    return fieldData;
}

void BM_SumRawArray(benchmark::State &state) {
    FieldData_a fd = makeValues();
    const auto *values = static_cast<const float *>(fd->Data);
    for (auto _ : state) {
        double sum = 0.0;
        for (LgIndex_t n = 0; n < kNumValues; n++) sum += values[n];
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kNumValues);
}

void BM_SumFieldDataFastPath(benchmark::State &state) {
    FieldData_a fd = makeValues();
    for (auto _ : state) {
        double sum = 0.0;
        if (fd->GetFunction == GetFieldValueForFloat) {
            const auto *values = static_cast<const float *>(fd->Data);
            for (LgIndex_t n = 0; n < fd->NumValues; n++) sum += values[n];
        } else {
            for (LgIndex_t n = 0; n < fd->NumValues; n++) sum += GetFieldValue(fd, n);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kNumValues);
}

void BM_SumFieldDataGetFunction(benchmark::State &state) {
    FieldData_a fd = makeValues();
    for (auto _ : state) {
        double sum = 0.0;
        for (LgIndex_t n = 0; n < fd->NumValues; n++) sum += GetFieldValue(fd, n);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kNumValues);
}

}  // namespace

BENCHMARK(BM_SumRawArray)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_SumFieldDataFastPath)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_SumFieldDataGetFunction)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
