#include "BenchSupport.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <thread>

namespace quorin::bench {
namespace {

struct RowInfo {
    RowShape shape;
    std::string peer;
};

std::map<std::string, RowInfo>& Rows() {
    static std::map<std::string, RowInfo> rows;
    return rows;
}

std::string MemcpyName(size_t bytes) { return "memcpy/" + std::to_string(bytes >> 20) + "MiB+" + std::to_string(bytes & 0xFFFFF); }

// Prints the usual console output, then the ratio table.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median")
                // The registered name: str() would add "/real_time".
                seconds_[run.run_name.function_name] = run.GetAdjustedRealTime() / 1e9 * TimeUnitScale(run.time_unit);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-52s %10s %8s %9s %9s %9s\n", "row", "MP/s", "GB/s", "x memcpy", "x peer", "x st");
        for (const auto& [name, info] : Rows()) {
            const auto found = seconds_.find(name);
            if (found == seconds_.end()) continue;
            const double t = found->second;
            const double pixels = static_cast<double>(info.shape.width * info.shape.height);
            std::printf("%-52s %10.0f %8.2f", name.c_str(), pixels / t / 1e6, info.shape.bytesMoved / t / 1e9);
            printRatio(MemcpyName(info.shape.bytesMoved), t);
            if (!info.peer.empty()) {
                RowShape peer = info.shape;
                peer.operation = info.peer;
                printRatio(RowName(peer), t);
            } else {
                std::printf(" %9s", "");
            }
            if (info.shape.split != Split::Single) {
                RowShape single = info.shape;
                single.split = Split::Single;
                printRatio(RowName(single), t);
            }
            std::printf("\n");
        }
    }

private:
    static double TimeUnitScale(benchmark::TimeUnit unit) {
        switch (unit) {
            case benchmark::kNanosecond: return 1;
            case benchmark::kMicrosecond: return 1e3;
            case benchmark::kMillisecond: return 1e6;
            default: return 1e9;
        }
    }
    void printRatio(const std::string& other, double t) {
        const auto found = seconds_.find(other);
        if (found == seconds_.end()) std::printf(" %9s", "-");
        else std::printf(" %9.2f", found->second / t);  // >1: this row is faster
    }
    std::map<std::string, double> seconds_;
};

// A thread that runs `work` each time it is started, spinning (never
// sleeping) in between, so that starting it costs no wake-up.
class SpinningHelper {
public:
    explicit SpinningHelper(std::function<void()> work)
        : thread_([this, work = std::move(work)] {
              for (uint64_t seen = 0;;) {
                  const uint64_t wanted = started_.load(std::memory_order_acquire);
                  if (wanted == kQuit) return;
                  if (wanted == seen) continue;
                  work();
                  seen = wanted;
                  finished_.store(seen, std::memory_order_release);
              }
          }) {}
    ~SpinningHelper() {
        started_.store(kQuit, std::memory_order_release);
        thread_.join();
    }
    void start() { started_.fetch_add(1, std::memory_order_release); }
    void wait() const {
        const uint64_t wanted = started_.load(std::memory_order_relaxed);
        while (finished_.load(std::memory_order_acquire) != wanted) {
        }
    }

private:
    static constexpr uint64_t kQuit = ~uint64_t{0};
    std::atomic<uint64_t> started_{0}, finished_{0};
    std::thread thread_;  // last: starts once the counters exist
};

}  // namespace

std::string RowName(const RowShape& shape) {
    return shape.operation + "/" + std::to_string(shape.width) + "x" + std::to_string(shape.height) +
           (shape.split == Split::Single ? "/st" : shape.split == Split::Default ? "/mt" : "/pair");
}

void RegisterRow(const RowShape& shape, std::function<void()> body, const std::string& peer,
                 std::function<void()> prepare, std::function<void()> finish) {
    const std::string name = RowName(shape);
    Rows()[name] = RowInfo{shape, peer};
    const double pixels = static_cast<double>(shape.width * shape.height);
    const double bytes = static_cast<double>(shape.bytesMoved);
    benchmark::RegisterBenchmark(name.c_str(), [body = std::move(body), prepare = std::move(prepare),
                                                finish = std::move(finish), pixels, bytes](benchmark::State& state) {
        if (prepare) prepare();
        for (auto _ : state) body();
        if (finish) finish();
        state.counters["MP/s"] = benchmark::Counter(pixels / 1e6 * state.iterations(), benchmark::Counter::kIsRate);
        state.counters["GB/s"] = benchmark::Counter(bytes / 1e9 * state.iterations(), benchmark::Counter::kIsRate);
    })->UseRealTime()->Unit(benchmark::kMicrosecond);
    RegisterMemcpy(shape.bytesMoved);
}

void RegisterPairRow(const RowShape& shape, std::function<void(size_t, size_t)> half, std::function<void()> prepare) {
    RowShape pair = shape;
    pair.split = Split::Pair;
    const size_t top = shape.height / 2, bottom = shape.height - top;
    // The helper lives for one timed run (a repetition): it must not spin
    // while other rows are timed.
    auto helper = std::make_shared<std::unique_ptr<SpinningHelper>>();
    RegisterRow(
        pair,
        [half, helper, top] {
            (*helper)->start();
            half(0, top);
            (*helper)->wait();
        },
        {},
        [half, helper, prepare = std::move(prepare), top, bottom] {
            if (prepare) prepare();
            *helper = std::make_unique<SpinningHelper>([half, top, bottom] { half(top, bottom); });
        },
        [helper] { helper->reset(); });
}

void RegisterScalarRow(const RowShape& shape, std::function<void()> body, std::function<void()> prepare) {
    RowShape scalar = shape;
    scalar.operation += ".scalar";
    scalar.split = Split::Single;
    // The switch is process-wide: it is set for one timed run and restored
    // before any other row runs.
    RegisterRow(
        scalar, std::move(body), shape.operation,
        [prepare = std::move(prepare)] {
            if (prepare) prepare();
            Quorin_Decelerate();
        },
        [] { Quorin_Boosten(~uint64_t{0}); });
}

void RegisterMemcpy(size_t bytes) {
    static std::set<size_t> registered;
    if (!registered.insert(bytes).second) return;
    const std::string name = MemcpyName(bytes);
    benchmark::RegisterBenchmark(name.c_str(), [bytes](benchmark::State& state) {
        // Half the moved bytes are read, half written, as in a conversion.
        std::vector<uint8_t> from(bytes / 2, 1), to(bytes / 2);
        for (auto _ : state) {
            std::memcpy(to.data(), from.data(), from.size());
            benchmark::DoNotOptimize(to.data());
        }
        state.counters["GB/s"] = benchmark::Counter(static_cast<double>(bytes) / 1e9 * state.iterations(),
                                                    benchmark::Counter::kIsRate);
    })->UseRealTime()->Unit(benchmark::kMicrosecond);
}

OwnedImage::OwnedImage(size_t width, size_t height, size_t pixelBytes, uint32_t seed)
    : bytes(width * height * pixelBytes), buffer{nullptr, height, width, width * pixelBytes} {
    buffer.data = bytes.data();
    uint32_t state = seed * 2654435761u + 1;
    for (auto& b : bytes) {
        state = state * 1664525u + 1013904223u;
        b = static_cast<uint8_t>(state >> 24);
    }
}

void OwnedImage::fillUnitFloats() {
    auto* values = reinterpret_cast<float*>(bytes.data());
    for (size_t i = 0; i < bytes.size() / sizeof(float); ++i) values[i] = static_cast<float>((i * 7919) % 1000) / 999.0f;
}

std::vector<std::function<void()>>& Registrars() {
    static std::vector<std::function<void()>> registrars;
    return registrars;
}

}  // namespace quorin::bench

int main(int argc, char** argv) {
    for (auto& registrar : quorin::bench::Registrars()) registrar();
    benchmark::Initialize(&argc, argv);
    quorin::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
