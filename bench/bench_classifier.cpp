// Speed of the Gaussian decision: one Classify inverts and factors every
// class's covariance anew, so the cost grows with classes x features^3.

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "vekdll/classifier/bayes_klassifikator.h"

namespace {

// `classes` clouds of `features` features, 40 samples each, trained with the
// diagonal load; fixed seed.
void FillAndTrain(ZrCBayesKlassifikator& k, int features, int classes)
{
    std::mt19937 engine(2024);
    std::normal_distribution<float> noise(0.0f, 1.0f);
    k.setNumClasses(classes);
    for (int c = 0; c < classes; ++c) {
        for (int i = 0; i < 40; ++i) {
            auto* e = new ZrCKlassenelement(features, c);
            for (int f = 0; f < features; ++f) e->Features[f] = 4.0f * static_cast<float>((c + f) % classes) + noise(engine);
            k.AddEntryTrainingset(e);
        }
    }
    k.Training(false);
}

void BM_Classify(benchmark::State& state)
{
    const int features = static_cast<int>(state.range(0));
    const int classes = static_cast<int>(state.range(1));
    ZrCBayesKlassifikator k;
    FillAndTrain(k, features, classes);

    // A rotating set of probes, so that no branch learns a single answer.
    std::vector<ZrCKlassenelement*> probes;
    for (POSITION pos = k.TrainingSet.GetHeadPosition(); pos != nullptr && probes.size() < 64;) {
        probes.push_back(k.TrainingSet.GetNext(pos));
    }
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(k.Classify(probes[next]));
        next = (next + 1) % probes.size();
    }
    state.counters["features"] = features;
    state.counters["classes"] = classes;
    state.counters["classifications/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK(BM_Classify)->Args({3, 5})->Args({9, 2})->Args({9, 5})->Args({9, 10})->Args({16, 5})->Args({32, 5});

} // namespace
