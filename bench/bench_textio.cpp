// Text input: the plain CMatrix reader on an n by n block of numbers as the writers lay
// them out ("%10.4f", CR LF), and the same block with a symbol at the end of each row,
// which sends every row through the expansion searches of the number reader. The counter
// MB_per_s is the text's size over the time.
#include "femmat.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

namespace {

std::string MakeText(int n, bool bSymbol) {
    std::string text;
    char buf[32];
    for (int i = 0; i < n; i++) {
        for (int j = 0; j < n; j++) {
            snprintf(buf, sizeof buf, "%10.4f", (i * 31 + j * 17) % 1000 / 7.0 - 50.0);
            text += buf;
        }
        text += bSymbol ? " pi\r\n" : "\r\n";
    }
    return text;
}

void ReadPlain(benchmark::State &state) {
    int n = (int)state.range(0);
    std::string text = MakeText(n, state.range(1) != 0);
    CMemFile file(text.data(), (UINT)text.size());
    CMatrix m;
    for (auto _ : state) {
        file.SeekToBegin();
        m.ReadASCII(&file);
        benchmark::DoNotOptimize(m.m_pVector);
    }
    state.counters["MB_per_s"] = benchmark::Counter((double)text.size() * state.iterations() / 1e6,
                                                    benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(ReadPlain)
    ->ArgsProduct({{100, 300, 1000}, {0, 1}})
    ->ArgNames({"n", "symbol"})
    ->Unit(benchmark::kMillisecond);
