// How fast looks are drawn, beside Cairo drawing the same in the same run. After the table come the
// ratios of the least times of each pair. Run with --benchmark_repetitions for a minimum.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <random>
#include <string>

#include "bench/cairo_peer.h"

namespace skavlo::bench {
namespace {

constexpr PixelSize kScreen{1920, 1080};
constexpr PixelRect kWhole{0, 0, kScreen.width, kScreen.height};
const CircleStyle kStyle{55, 5, {0.66, 0.66, 0.66, 0.55}, {1, 1, 1, 0.55}};

// The ease-out timing curve, a cubic Bézier from (0, 0) over (0, 0) and (0.58, 1) to (1, 1).
double easeOut(double time) {
    double low = 0;
    double high = 1;
    for (int i = 0; i < 50; ++i) {
        const double s = (low + high) / 2;
        const double x = 3 * (1 - s) * s * s * 0.58 + s * s * s;
        (x < time ? low : high) = s;
    }
    return 3 * (1 - low) * low * low + low * low * low;
}

// Copies whose lives are spread evenly over the fade, anywhere on the screen.
std::vector<Instance> fadingCopies(int count) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> x(0, kScreen.width);
    std::uniform_real_distribution<float> y(0, kScreen.height);
    std::vector<Instance> copies;
    for (int i = 0; i < count; ++i) {
        const double p = easeOut((i + 0.5) / count);
        copies.push_back({x(random), y(random), float(1 - 0.99 * p), float(1 - p)});
    }
    std::shuffle(copies.begin(), copies.end(), random);
    return copies;
}

struct Screen {
    std::vector<std::uint32_t> pixels =
        std::vector<std::uint32_t>(std::size_t(kScreen.width) * std::size_t(kScreen.height));
    RenderTarget target{pixels.data(), kScreen.width, kScreen};
};

void countCopies(benchmark::State& state, int count) {
    state.counters["each"] = benchmark::Counter(
        count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void circles(benchmark::State& state) {
    Screen screen;
    const auto copies = fadingCopies(int(state.range(0)));
    for (auto _ : state) {
        drawCircles(screen.target, kWhole, kStyle, copies);
        benchmark::ClobberMemory();
    }
    countCopies(state, int(state.range(0)));
}

void circlesAndClear(benchmark::State& state) {
    Screen screen;
    const auto copies = fadingCopies(int(state.range(0)));
    for (auto _ : state) {
        clear(screen.target, kWhole);
        drawCircles(screen.target, kWhole, kStyle, copies);
        benchmark::ClobberMemory();
    }
    countCopies(state, int(state.range(0)));
}

void circlesCairo(benchmark::State& state) {
    CairoPeer peer(kScreen);
    const auto copies = fadingCopies(int(state.range(0)));
    for (auto _ : state) peer.circles(kStyle, copies);
    countCopies(state, int(state.range(0)));
}

// A soft ball with a bright spot, as emoji are.
Bitmap ballPicture(int side) {
    Bitmap picture{{side, side}, {}};
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double middle = side / 2.0;
            const double d = std::hypot(x + 0.5 - middle, y + 0.5 - middle) / middle;
            const double alpha = std::clamp((1 - d) * 10, 0.0, 1.0);
            const double light = 1 - 0.6 * std::hypot(x - 0.7 * middle, y - 0.7 * middle) / side;
            const auto level = [&](double part) { return std::uint32_t(255 * part * alpha); };
            picture.pixels.push_back(level(1) << 24 | level(light) << 16 | level(0.8 * light) << 8 |
                                     level(0.2 * light));
        }
    }
    return picture;
}

constexpr int kPictureSide = 80;

void pictures(benchmark::State& state) {
    Screen screen;
    const Sprite sprite(std::make_shared<Bitmap>(ballPicture(kPictureSide)), kPictureSide);
    const auto copies = fadingCopies(int(state.range(0)));
    for (auto _ : state) {
        drawSprites(screen.target, kWhole, sprite, copies);
        benchmark::ClobberMemory();
    }
    countCopies(state, int(state.range(0)));
}

void picturesCairo(benchmark::State& state, cairo_filter_t filter) {
    CairoPeer peer(kScreen);
    const Bitmap picture = ballPicture(kPictureSide);
    const auto copies = fadingCopies(int(state.range(0)));
    for (auto _ : state) peer.pictures(picture, kPictureSide, filter, copies);
    countCopies(state, int(state.range(0)));
}

void picturesCairoDefault(benchmark::State& state) {
    picturesCairo(state, CAIRO_FILTER_GOOD);
}

void picturesCairoBilinear(benchmark::State& state) {
    picturesCairo(state, CAIRO_FILTER_BILINEAR);
}

// The roofline: nothing but a colour over every pixel, as one disc that hides the screen's rim.
void wholeFrame(benchmark::State& state) {
    Screen screen;
    const CircleStyle style{6000, 0, {0.66, 0.66, 0.66, 0.55}, {}};
    const Instance middle{kScreen.width / 2.0F, kScreen.height / 2.0F, 1, 0.1F};
    for (auto _ : state) {
        drawCircles(screen.target, kWhole, style, {&middle, 1});
        benchmark::ClobberMemory();
    }
    state.counters["pixels"] = benchmark::Counter(double(screen.pixels.size()),
                                                  benchmark::Counter::kIsIterationInvariantRate);
}

void clearFrame(benchmark::State& state) {
    Screen screen;
    for (auto _ : state) {
        clear(screen.target, kWhole);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(circles)->Arg(1000)->Arg(25000)->Unit(benchmark::kMillisecond);
BENCHMARK(circlesAndClear)->Arg(25000)->Unit(benchmark::kMillisecond);
BENCHMARK(circlesCairo)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(pictures)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(picturesCairoDefault)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(picturesCairoBilinear)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(wholeFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(clearFrame)->Unit(benchmark::kMillisecond);

// Remembers the least time of each benchmark while the usual table is printed.
class Least : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) continue;
            const auto at = least_.try_emplace(run.run_name.function_name + "/" + run.run_name.args,
                                               std::numeric_limits<double>::max());
            at.first->second = std::min(at.first->second, run.GetAdjustedCPUTime());
        }
    }
    void ratio(const char* what, const std::string& slow, const std::string& fast,
               double copies = 1) const {
        const auto a = least_.find(slow);
        const auto b = least_.find(fast);
        if (a == least_.end() || b == least_.end()) return;
        std::printf("%-64s %8.2f\n", what, a->second / b->second / copies);
    }
    void figure(const char* what, const std::string& name, double factor) const {
        const auto at = least_.find(name);
        if (at != least_.end()) std::printf("%-64s %8.3f\n", what, at->second * factor);
    }

  private:
    std::map<std::string, double> least_;
};

void summary(const Least& least) {
    std::puts("\nLeast times:");
    least.ratio("1,000 fading circles: Cairo / ours", "circlesCairo/1000", "circles/1000");
    least.ratio("25,000 circles against 1,000, per copy", "circles/25000", "circles/1000", 25);
    least.figure("microseconds a copy, 1,000", "circles/1000", 1);
    least.figure("microseconds a copy, 25,000", "circles/25000", 1.0 / 25);
    least.figure("milliseconds a frame of 25,000, clear included", "circlesAndClear/25000", 1);
    least.ratio("1,000 fading pictures: Cairo, default filter / ours", "picturesCairoDefault/1000",
                "pictures/1000");
    least.ratio("1,000 fading pictures: Cairo, bilinear / ours", "picturesCairoBilinear/1000",
                "pictures/1000");
    least.figure("microseconds a copy, 1,000 pictures", "pictures/1000", 1);
    least.figure("milliseconds to blend one colour over the whole frame", "wholeFrame/", 1);
}

}  // namespace
}  // namespace skavlo::bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    skavlo::bench::Least least;
    benchmark::RunSpecifiedBenchmarks(&least);
    skavlo::bench::summary(least);
    return 0;
}
