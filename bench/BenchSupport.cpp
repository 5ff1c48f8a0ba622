#include "BenchSupport.h"

#include <hwy/targets.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <regex>
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

// The vector targets measured beside the best one (which the plain rows run),
// best first, as chosen by --targets before the families register their rows.
std::vector<int64_t>& OtherTargets() {
    static std::vector<int64_t> targets;
    return targets;
}

// Highway's one-lane fallback is not a vector target: the .scalar rows stand
// for the scalar kernels.
std::vector<int64_t> VectorTargets() {
    std::vector<int64_t> targets;
    for (const int64_t t : hwy::SupportedAndGeneratedTargets())
        if ((t & (HWY_SCALAR | HWY_EMU128)) == 0) targets.push_back(t);
    return targets;
}

// A default row's variants, in column order (each other target, then the
// scalar kernels), by the default row's name.
std::map<std::string, std::vector<std::string>>& Variants() {
    static std::map<std::string, std::vector<std::string>> variants;
    return variants;
}

// The per-target table's column heads: the best target, the others, scalar.
std::vector<std::string> TargetColumns() {
    const std::vector<int64_t> all = VectorTargets();
    std::vector<std::string> columns{all.empty() ? "vector" : hwy::TargetName(all.front())};
    for (const int64_t t : OtherTargets()) columns.push_back(hwy::TargetName(t));
    columns.push_back("scalar");
    return columns;
}

std::string MemcpyName(size_t bytes) { return "memcpy/" + std::to_string(bytes >> 20) + "MiB+" + std::to_string(bytes & 0xFFFFF); }

// The rows a row's ratios are taken against: the peer at the same size and
// split, and the same operation single-threaded.
std::string PeerName(const RowInfo& info) {
    RowShape peer = info.shape;
    peer.operation = info.peer;
    return RowName(peer);
}
std::string SingleName(const RowInfo& info) {
    RowShape single = info.shape;
    single.split = Split::Single;
    return RowName(single);
}

// What the library appends to the name of every row, all being timed in real time.
constexpr const char* kTimeSuffix = "/real_time";

// A name as a regular expression that matches only itself.
std::string Literal(const std::string& name) {
    static const std::regex special(R"([\]\[\\^$.|?*+(){}])");
    return std::regex_replace(name, special, "\\$&");
}

// A --benchmark_filter that selects some of our rows also selects the rows
// their ratios need (memcpy of the same bytes, the peer, the /st twin), so a
// filtered run prints whole lines. The filter is matched as the benchmark
// library matches it: an extended regular expression found anywhere in the
// name. A negative filter ("-...") is left alone.
std::string WithRatioRows(const std::string& filter) {
    if (filter.empty() || filter[0] == '-' || filter == "." || filter == "all") return filter;
    const std::regex wanted(filter, std::regex::extended);
    std::set<std::string> needed;
    for (const auto& [name, info] : Rows()) {
        if (!std::regex_search(name + kTimeSuffix, wanted)) continue;
        needed.insert(MemcpyName(info.shape.bytesMoved));
        if (!info.peer.empty()) needed.insert(PeerName(info));
        if (info.shape.split != Split::Single) needed.insert(SingleName(info));
        // A selected row brings its rows on the other targets, which compare
        // with the same memcpy and peer.
        const auto variants = Variants().find(name);
        if (variants != Variants().end()) needed.insert(variants->second.begin(), variants->second.end());
    }
    std::string extended = "(" + filter + ")";
    for (const std::string& name : needed) extended += "|^" + Literal(name + kTimeSuffix) + "$";
    return extended;
}

// Colour only for a terminal that takes it: piped or redirected output (a
// file, a CI log, median_of_runs.py) gets plain text. NO_COLOR turns it off.
bool WantsColour() {
    const char* term = std::getenv("TERM");
    return isatty(fileno(stdout)) && std::getenv("NO_COLOR") == nullptr && term != nullptr &&
           std::string(term) != "dumb";
}

// The console lines as the runs finish, in plain units (the library's own
// reporter writes "2.34k/s" for 2340 megapixels/s), then the ratio table.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    explicit RatioReporter(bool colour) : ConsoleReporter(colour ? OO_ColorTabular : OO_Tabular), colour_(colour) {}

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
            printRatio(MemcpyName(info.shape.bytesMoved), true, t);
            printRatio(PeerName(info), !info.peer.empty() && Rows().count(PeerName(info)) != 0, t);
            printRatio(SingleName(info), info.shape.split != Split::Single, t);
            std::printf("\n");
        }
        std::printf(
            "\nMP/s: megapixels (10^6 pixels) per second. GB/s: bytes read and written per second, in 10^9 bytes.\n"
            "x memcpy, x peer, x st: the time of the row compared with divided by this row's time, so above 1\n"
            "means this row is faster. x memcpy compares with a memcpy of the same bytes, x peer with the peer\n"
            "library's row doing the same job (or, for a .scalar row, the vector row), x st with the same row\n"
            "single-threaded. '-': that row exists but was not measured in this run. Empty: there is no such\n"
            "row (no peer for this job or this split; /st rows have no x st). With repetitions, each figure is\n"
            "the median of the repetitions.\n");
        printTargetTable();
    }

protected:
    // Once: every row has the same columns, whatever counters it sets. Not
    // "row", which starts the ratio table that median_of_runs.py looks for.
    void PrintHeader(const Run&) override {
        if (printedHeader_) return;
        printedHeader_ = true;
        const std::string line = Format("%-*s %13s %12s %11s %9s", Width(), "benchmark", "time (ms)", "iterations",
                                        "MP/s", "GB/s");
        std::printf("%s\n%s\n", line.c_str(), std::string(line.size(), '-').c_str());
    }

    void PrintRunData(const Run& run) override {
        std::string name = run.benchmark_name();
        if (name.size() > std::strlen(kTimeSuffix) && name.find(kTimeSuffix) != std::string::npos)
            name.erase(name.find(kTimeSuffix), std::strlen(kTimeSuffix));
        std::printf("%s%-*s%s", colour_ ? "\033[32m" : "", Width(), name.c_str(), colour_ ? "\033[0m" : "");
        if (run.error_occurred) {
            std::printf(" error: %s\n", run.error_message.c_str());
            return;
        }
        if (run.aggregate_unit == benchmark::kPercentage) {  // the coefficient of variation
            std::printf(" %12.1f%%\n", run.real_accumulated_time * 100);
            return;
        }
        const double ms = run.GetAdjustedRealTime() * TimeUnitScale(run.time_unit) / 1e6;
        std::printf(" %13.3f %12lld", ms, static_cast<long long>(run.iterations));
        for (const char* counter : {"MP/s", "GB/s"}) {
            const auto found = run.counters.find(counter);
            if (found == run.counters.end()) std::printf(" %*s", counter[0] == 'M' ? 11 : 9, "");
            else std::printf(" %*.*f", counter[0] == 'M' ? 11 : 9, counter[0] == 'M' ? 1 : 2, found->second.value);
        }
        std::printf("\n");
    }

private:
    // One line per row measured on several targets: its peer ratio, then its
    // memcpy ratio, on each target, all from this run.
    void printTargetTable() {
        const std::vector<std::string> columns = TargetColumns();
        bool any = false;
        for (const auto& [name, variants] : Variants()) {
            if (seconds_.count(name) == 0) continue;
            if (!any) {
                any = true;
                std::printf("\n%-52s", "per target");
                for (const char* ratio : {"x peer", "x memcpy"}) {
                    std::printf(" | %-8s", ratio);
                    for (const std::string& c : columns) std::printf(" %7s", c.c_str());
                }
                std::printf("\n");
            }
            const RowInfo& info = Rows().at(name);
            std::vector<std::string> row{name};
            row.insert(row.end(), variants.begin(), variants.end());
            std::printf("%-52s", name.c_str());
            for (const bool peer : {true, false}) {
                std::printf(" | %-8s", "");
                const bool exists = peer ? !info.peer.empty() && Rows().count(PeerName(info)) != 0 : true;
                for (const std::string& r : row) {
                    const auto found = seconds_.find(r);
                    const auto other = seconds_.find(peer ? PeerName(info) : MemcpyName(info.shape.bytesMoved));
                    if (!exists) std::printf(" %7s", "");
                    else if (found == seconds_.end() || other == seconds_.end()) std::printf(" %7s", "-");
                    else std::printf(" %7.2f", other->second / found->second);
                }
            }
            std::printf("\n");
        }
        if (!any) return;
        std::printf(
            "\nper target: each row on each vector target (the plain row runs the best one, the others are its\n"
            "@TARGET rows) and with the scalar kernels (its .scalar row), as x peer and x memcpy above.\n");
    }

    int Width() const { return static_cast<int>(std::max<size_t>(name_field_width_, 20)); }

    template <class... Args>
    static std::string Format(const char* format, Args... args) {
        char line[256];
        std::snprintf(line, sizeof line, format, args...);
        return line;
    }
    static double TimeUnitScale(benchmark::TimeUnit unit) {
        switch (unit) {
            case benchmark::kNanosecond: return 1;
            case benchmark::kMicrosecond: return 1e3;
            case benchmark::kMillisecond: return 1e6;
            default: return 1e9;
        }
    }
    // The ratio to row `other`; empty when there is no such row to compare
    // with, "-" when there is one but this run did not measure it.
    void printRatio(const std::string& other, bool exists, double t) {
        const auto found = seconds_.find(other);
        if (!exists) std::printf(" %9s", "");
        else if (found == seconds_.end()) std::printf(" %9s", "-");
        else std::printf(" %9.2f", found->second / t);  // >1: this row is faster
    }
    bool colour_;
    bool printedHeader_ = false;
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
    RowShape single = shape;
    single.split = Split::Single;
    const std::string vectorRow = RowName(single);
    const auto registered = Rows().find(vectorRow);
    const std::string peer = registered != Rows().end() ? registered->second.peer : std::string();
    std::vector<std::string>& variants = Variants()[vectorRow];
    // Highway's target switch is process-wide too, and chooses again on the
    // next call once set or cleared.
    if (single.width >= 1024) {
        for (const int64_t target : OtherTargets()) {
            RowShape limited = single;
            limited.operation += std::string("@") + hwy::TargetName(target);
            RegisterRow(
                limited, body, peer,
                [prepare, target] {
                    if (prepare) prepare();
                    hwy::SetSupportedTargetsForTest(target);
                },
                [] { hwy::SetSupportedTargetsForTest(0); });
            variants.push_back(RowName(limited));
        }
    }
    variants.push_back(RowName(scalar));
    RegisterRow(
        scalar, std::move(body), shape.operation,
        [prepare = std::move(prepare)] {
            if (prepare) prepare();
            Quorin_Decelerate();
        },
        [] { Quorin_Boosten(~uint64_t{0}); });
}

// --targets=all (every vector target the machine runs, the default),
// --targets=none (the best only), or a list such as --targets=AVX2,SSE4.
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

bool ChooseTargets(const std::string& list) {
    const std::vector<int64_t> all = VectorTargets();
    OtherTargets().clear();
    if (list == "none") return true;
    if (list == "all") {
        OtherTargets().assign(all.begin() + (all.empty() ? 0 : 1), all.end());
        return true;
    }
    std::vector<std::string> names;
    for (size_t from = 0; from <= list.size();) {
        const size_t comma = std::min(list.find(',', from), list.size());
        names.push_back(list.substr(from, comma - from));
        from = comma + 1;
    }
    bool known = true;
    for (const std::string& name : names) {
        const auto found = std::find_if(all.begin(), all.end(), [&](int64_t t) { return name == hwy::TargetName(t); });
        if (found == all.end()) known = false;
        else if (found != all.begin() && std::count(OtherTargets().begin(), OtherTargets().end(), *found) == 0)
            OtherTargets().push_back(*found);
    }
    // Best first, as the columns go.
    std::sort(OtherTargets().begin(), OtherTargets().end());
    if (known) return true;
    std::fprintf(stderr, "--targets=%s: this machine's vector targets are", list.c_str());
    for (const int64_t t : all) std::fprintf(stderr, " %s", hwy::TargetName(t));
    std::fprintf(stderr, " (or all, none)\n");
    return false;
}

#ifdef QUORIN_BENCH_VIPS
void StartVips() {
    static const bool started = [] {
        vips_init("quorin-bench");
        vips_concurrency_set(1);  // the single-threaded row
        return true;
    }();
    (void)started;
}

void RunVips(const void* data, size_t width, size_t height, int bands, VipsBandFormat format,
             const std::function<int(VipsImage*, VipsImage**)>& operation) {
    const size_t bytes = width * height * static_cast<size_t>(bands) * vips_format_sizeof(format);
    VipsImage* in = vips_image_new_from_memory(data, bytes, static_cast<int>(width), static_cast<int>(height), bands,
                                               format);
    VipsImage* out = nullptr;
    void* pixels = nullptr;
    if (in == nullptr || operation(in, &out) != 0 || (pixels = vips_image_write_to_memory(out, nullptr)) == nullptr) {
        std::fprintf(stderr, "libvips failed: %s\n", vips_error_buffer());
        std::abort();
    }
    g_free(pixels);
    g_object_unref(out);
    g_object_unref(in);
}
#endif

}  // namespace quorin::bench

int main(int argc, char** argv) {
    // Our own option, taken out before the benchmark library reads the rest.
    std::string targets = "all";
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg.rfind("--targets=", 0) == 0) targets = arg.substr(std::strlen("--targets="));
        else argv[kept++] = argv[i];
    }
    argc = kept;
    if (!quorin::bench::ChooseTargets(targets)) return 2;
    for (auto& registrar : quorin::bench::Registrars()) registrar();
    // The filter is widened before the library reads it; the strings live
    // until the end of main.
    std::vector<std::string> widened;
    widened.reserve(static_cast<size_t>(argc));
    const std::string flag = "--benchmark_filter=";
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg.rfind(flag, 0) != 0) continue;
        widened.push_back(flag + quorin::bench::WithRatioRows(arg.substr(flag.size())));
        argv[i] = widened.back().data();
    }
    benchmark::Initialize(&argc, argv);
    quorin::bench::RatioReporter reporter(quorin::bench::WantsColour());
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
