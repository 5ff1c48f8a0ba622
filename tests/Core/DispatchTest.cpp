// The dispatchers' band and tile arithmetic, checked against the rules written
// out independently here, on forced processor counts.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

#include "Core/Dispatch.h"
#include "quorin/Utilities.h"

namespace quorin {
namespace {

using Piece = std::tuple<size_t, size_t, size_t, size_t, size_t>;  // index, x, y, w, h

struct Recorder {
    std::mutex mutex;
    std::vector<Piece> pieces;
    static void Record(void* context, size_t i, size_t x, size_t y, size_t w, size_t h) {
        auto* self = static_cast<Recorder*>(context);
        std::lock_guard<std::mutex> lock(self->mutex);
        self->pieces.emplace_back(i, x, y, w, h);
    }
    std::vector<Piece> sorted() {
        std::sort(pieces.begin(), pieces.end());
        return pieces;
    }
};

class ForcedProcessors {
public:
    explicit ForcedProcessors(unsigned n) { SetProcessorCountForTest(n); }
    ~ForcedProcessors() { SetProcessorCountForTest(0); }
};

TEST(Dispatch, NullClosureIsAnInternalFaultAndRunsNothing) {
    EXPECT_EQ(_QuorinDispatchApplyOnRows(10, 10, nullptr), kQuorinError_InternalFault);
    EXPECT_EQ(_QuorinDispatchApplyOnGrid(2, 2, 10, 10, nullptr), kQuorinError_InternalFault);
    Quorin_PieceClosure empty{nullptr, nullptr};
    EXPECT_EQ(_QuorinDispatchApplyOnRows(10, 10, &empty), kQuorinError_InternalFault);
}

TEST(Dispatch, RowsCutOneBandPerProcessorWithTheRemainderLast) {
    for (unsigned n : {1u, 2u, 3u, 4u, 7u}) {
        for (size_t height : {0u, 1u, 3u, 7u, 64u, 1001u}) {
            ForcedProcessors forced(n);
            Recorder recorder;
            Quorin_PieceClosure closure{&Recorder::Record, &recorder};
            ASSERT_EQ(_QuorinDispatchApplyOnRows(13, height, &closure), kQuorinSuccess);
            const auto pieces = recorder.sorted();
            ASSERT_EQ(pieces.size(), n);
            size_t covered = 0;
            for (size_t i = 0; i < n; ++i) {
                const size_t band = height / n;
                EXPECT_EQ(pieces[i], Piece(i, 0, band * i, 13, i + 1 == n ? height - band * (n - 1) : band))
                    << n << " processors, height " << height;
                covered += std::get<4>(pieces[i]);
            }
            EXPECT_EQ(covered, height);
        }
    }
}

TEST(Dispatch, GridChoosesItsShapeFromTheProcessorCountWhenAskedTo) {
    // processors -> (across, down)
    const std::vector<std::tuple<unsigned, size_t, size_t>> shapes{
        {1, 1, 1}, {2, 2, 1}, {3, 3, 1}, {4, 2, 2}, {6, 3, 2}, {8, 4, 2}, {9, 3, 3}, {16, 4, 4}};
    for (auto [n, across, down] : shapes) {
        ForcedProcessors forced(n);
        Recorder recorder;
        Quorin_PieceClosure closure{&Recorder::Record, &recorder};
        ASSERT_EQ(_QuorinDispatchApplyOnGrid(3, 0, 100, 50, &closure), kQuorinSuccess);
        const auto pieces = recorder.sorted();
        ASSERT_EQ(pieces.size(), across * down) << n;
        // Last column and last row absorb the remainders; tiles cover the area once.
        size_t area = 0;
        for (const auto& [i, x, y, w, h] : pieces) {
            const size_t c = i % across, r = i / across;
            EXPECT_EQ(x, (100 / across) * c);
            EXPECT_EQ(y, (50 / down) * r);
            EXPECT_EQ(w, c + 1 == across ? 100 - (100 / across) * (across - 1) : 100 / across);
            EXPECT_EQ(h, r + 1 == down ? 50 - (50 / down) * (down - 1) : 50 / down);
            area += w * h;
        }
        EXPECT_EQ(area, 100u * 50u);
    }
}

TEST(Dispatch, GridHonoursAnExplicitShape) {
    Recorder recorder;
    Quorin_PieceClosure closure{&Recorder::Record, &recorder};
    ASSERT_EQ(_QuorinDispatchApplyOnGrid(2, 2, 10, 5, &closure), kQuorinSuccess);
    EXPECT_EQ(recorder.sorted(), (std::vector<Piece>{{0, 0, 0, 5, 2}, {1, 5, 0, 5, 2}, {2, 0, 2, 5, 3}, {3, 5, 2, 5, 3}}));
}

TEST(Dispatch, BandPlanFollowsPOrPMinusOne) {
    for (size_t p = 2; p <= 9; ++p) {
        for (size_t rows = p; rows < 200; ++rows) {
            const BandPlan plan = PlanBands(p, rows);
            const size_t n = rows % p == 0 ? p : p - 1;
            EXPECT_EQ(plan.bands, n);
            EXPECT_EQ(plan.chunk * n + plan.remainder, rows);
            size_t next = 0;
            for (size_t i = 0; i <= n; ++i) {
                if (i == n && plan.remainder == 0) break;
                EXPECT_EQ(plan.firstRowOf(i), next);
                next += plan.rowsOf(i);
            }
            EXPECT_EQ(next, rows);
        }
    }
}

class CountingWork final : public QuorinRowWork {
public:
    CountingWork(size_t rows, size_t width) : rows_(rows), width_(width) {}
    size_t pixelCount() const override { return rows_ * width_; }
    size_t rowCount() const override { return rows_; }
    QuorinRowJob* makeJob(size_t firstRow, size_t rows) const override {
        struct Job final : QuorinRowJob {
            const CountingWork* work;
            size_t first, count;
            Job(const CountingWork* w, size_t f, size_t c) : work(w), first(f), count(c) {}
            void run() override {
                std::lock_guard<std::mutex> lock(work->mutex_);
                work->jobs_.emplace_back(first, count);
                work->threads_.push_back(std::this_thread::get_id());
            }
        };
        return new Job(this, firstRow, rows);
    }
    std::vector<std::pair<size_t, size_t>> jobs() const {
        auto sorted = jobs_;
        std::sort(sorted.begin(), sorted.end());
        return sorted;
    }
    mutable std::mutex mutex_;
    mutable std::vector<std::pair<size_t, size_t>> jobs_;
    mutable std::vector<std::thread::id> threads_;

private:
    size_t rows_, width_;
};

TEST(Dispatch, RowWorkBandsIncludeAnEmptyLastJob) {
    ForcedProcessors forced(4);
    using Jobs = std::vector<std::pair<size_t, size_t>>;
    const std::vector<std::pair<size_t, Jobs>> cases{
        {10, {{0, 3}, {3, 3}, {6, 3}, {9, 1}}},
        {8, {{0, 2}, {2, 2}, {4, 2}, {6, 2}}},
        {6, {{0, 2}, {2, 2}, {4, 2}, {6, 0}}},
    };
    for (const auto& [rows, expected] : cases) {
        CountingWork work(rows, 64000);  // wide rows: well above the pixel threshold
        QuorinRunRowWork(work, 0);
        EXPECT_EQ(work.jobs(), expected) << rows << " rows";
    }
}

TEST(Dispatch, RowWorkStaysOnTheCallingThreadBelowEveryThreshold) {
    ForcedProcessors forced(4);
    struct Case { size_t rows, width; Quorin_Flags flags; };
    for (const Case& c : {Case{3, 100000, 0}, Case{100, 639, 0}, Case{100, 100000, kQuorinFlag_SingleThreaded}}) {
        CountingWork work(c.rows, c.width);
        QuorinRunRowWork(work, c.flags);
        ASSERT_EQ(work.jobs(), (std::vector<std::pair<size_t, size_t>>{{0, c.rows}}));
        EXPECT_EQ(work.threads_[0], std::this_thread::get_id());
    }
    // 125 * 512 = 64000 pixels is the first count that splits.
    CountingWork atThreshold(125, 512);
    QuorinRunRowWork(atThreshold, 0);
    EXPECT_EQ(atThreshold.jobs().size(), 4u);
}

TEST(Dispatch, RowsDecisionUsesA32BitPixelCount) {
    EXPECT_FALSE(WantsRowsOrGrid(0, 63999, 1));
    EXPECT_TRUE(WantsRowsOrGrid(0, 64000, 1));
    EXPECT_FALSE(WantsRowsOrGrid(kQuorinFlag_SingleThreaded, 4096, 4096));
    // 65536 x 65536 wraps to 0 in 32 bits: stays serial, as the rule computes it.
    EXPECT_FALSE(WantsRowsOrGrid(0, 65536, 65536));
}

// The band splitters, the rows runner and the row-work dispatcher share
// their bands out (in pieces, or whole bands to whichever thread comes
// first): every row must still be run exactly once, for every processor
// count and every height (fewer rows than pieces or than processors
// included), and a small image must stay one call on the caller's thread.
TEST(Dispatch, EveryRowRunsOnceForEveryProcessorCountAndHeight) {
    enum Splitter { kGroup, kApply, kRows, kRowWork };
    std::vector<size_t> heights;
    for (size_t h = 0; h <= 40; ++h) heights.push_back(h);
    for (size_t h : {63u, 64u, 65u, 101u, 257u, 1000u, 4097u}) heights.push_back(h);
    for (unsigned processors = 1; processors <= 9; ++processors) {
        ForcedProcessors forced(processors);
        for (size_t height : heights) {
            for (Splitter splitter : {kGroup, kApply, kRows, kRowWork}) {
                std::vector<std::atomic<int>> hits(height);
                const auto band = [&](size_t first, size_t rows) {
                    ASSERT_LE(first + rows, height);
                    for (size_t r = first; r < first + rows; ++r) hits[r].fetch_add(1);
                };
                if (splitter == kGroup) {
                    EXPECT_EQ(RunBandsOnGroup(0, 64000, height, band), kQuorinSuccess);
                } else if (splitter == kApply) {
                    RunBandsOnApply(0, 64000, height, band);
                } else if (splitter == kRows) {
                    RunRows(0, 64000, height, [&](size_t x, size_t y, size_t w, size_t h) {
                        EXPECT_EQ(x, 0u);
                        EXPECT_EQ(w, 64000u);
                        band(y, h);
                    });
                } else {
                    QuorinRunRowWork(BandWork(64000, height, band), 0);
                }
                for (size_t r = 0; r < height; ++r)
                    ASSERT_EQ(hits[r].load(), 1) << "row " << r << ", " << processors << " processors, " << height
                                                 << " rows, splitter " << splitter;
            }
        }
    }
    size_t calls = 0;
    EXPECT_EQ(RunBandsOnGroup(0, 10, 10, [&](size_t first, size_t rows) {
                  ++calls;
                  EXPECT_EQ(first + rows, 10u);
              }),
              kQuorinSuccess);
    EXPECT_EQ(calls, 1u);
}

// Pieces go to at most one thread per band with rows. With two processors
// and an odd height the band rule makes a single band; the rows dispatcher
// gives all rows to its last band when there are fewer rows than processors.
// Either way one thread must run every piece.
TEST(Dispatch, OneBandWithRowsMeansOneThreadForAllItsPieces) {
    enum Splitter { kGroup, kApply, kRows };
    for (Splitter splitter : {kGroup, kApply, kRows}) {
        ForcedProcessors forced(splitter == kRows ? 4 : 2);
        std::mutex mutex;
        std::vector<std::thread::id> threads;
        const auto band = [&](size_t, size_t) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));  // time for a second thread to join
            std::lock_guard<std::mutex> lock(mutex);
            threads.push_back(std::this_thread::get_id());
        };
        size_t expectedPieces = BandPieces::kMaxPiecesPerBand;  // 101 rows of 64000 pixels
        if (splitter == kGroup) {
            EXPECT_EQ(RunBandsOnGroup(0, 64000, 101, band), kQuorinSuccess);
        } else if (splitter == kApply) {
            RunBandsOnApply(0, 64000, 101, band);
        } else {
            RunRows(0, 64000, 3, [&](size_t, size_t y, size_t, size_t h) { band(y, h); });
            expectedPieces = 3;  // one row each
        }
        ASSERT_EQ(threads.size(), expectedPieces) << "splitter " << splitter;
        EXPECT_EQ(std::count(threads.begin(), threads.end(), threads[0]), static_cast<std::ptrdiff_t>(threads.size()))
            << "splitter " << splitter;
    }
}

// The caller takes indices too: each must still run once, and the call must
// not return while a slow index (on a worker or on the caller) is running.
TEST(Dispatch, ParallelApplyRunsEachIndexOnceAndReturnsAfterTheLast) {
    for (size_t tasks : {0u, 1u, 2u, 5u, 33u}) {
        std::vector<std::atomic<int>> runs(tasks);
        std::atomic<size_t> running{0};
        ParallelApply(tasks, [&](size_t i) {
            running.fetch_add(1);
            std::this_thread::sleep_for(std::chrono::microseconds(300 * (i % 3)));
            runs[i].fetch_add(1);
            running.fetch_sub(1);
        });
        EXPECT_EQ(running.load(), 0u);
        for (size_t i = 0; i < tasks; ++i) EXPECT_EQ(runs[i].load(), 1) << "index " << i << " of " << tasks;
    }
}

// Calls in quick succession hand their shares to the workers still awake
// from the call before, from several calling threads at once: every index
// still runs exactly once, and before its own call returns.
TEST(Dispatch, BackToBackCallsFromSeveralThreadsRunEachIndexOnce) {
    constexpr size_t kCalls = 3000;
    std::atomic<size_t> faults{0};
    auto caller = [&faults](size_t seed) {
        for (size_t c = 0; c < kCalls; ++c) {
            std::vector<std::atomic<int>> runs(2 + (c + seed) % 3);
            ParallelApply(runs.size(), [&runs](size_t i) { runs[i].fetch_add(1); });
            for (auto& r : runs)
                if (r.load() != 1) faults.fetch_add(1);
        }
    };
    std::vector<std::thread> callers;
    for (size_t t = 0; t < 3; ++t) callers.emplace_back(caller, t);
    for (auto& t : callers) t.join();
    EXPECT_EQ(faults.load(), 0u);
}

// Keeps every worker of the global queue from taking an index until released.
class HeldWorkers {
public:
    HeldWorkers() {
        held_.store(true);
        entered_.store(0);
        detail::SetWorkerStartHookForTest(&Hold);
    }
    ~HeldWorkers() { release(0); }
    // Lets the workers go and waits until `expected` of them have passed the hook.
    void release(size_t expected) {
        held_.store(false);
        held_.notify_all();
        while (entered_.load() < expected) std::this_thread::sleep_for(std::chrono::microseconds(100));
        detail::SetWorkerStartHookForTest(nullptr);
    }
    static size_t entered() { return entered_.load(); }

private:
    static void Hold() {
        entered_.fetch_add(1);
        held_.wait(true);
    }
    static inline std::atomic<bool> held_{false};
    static inline std::atomic<size_t> entered_{0};
};

// A caller must not wait for workers that have not started: with every
// worker held back, each dispatcher still completes, every piece on the
// caller's thread, with the pieces it hands out unchanged.
TEST(Dispatch, TheCallerRunsEveryPieceNoWorkerHasStarted) {
#if QUORIN_WITHOUT_LIBDISPATCH
    GTEST_SKIP() << "built without libdispatch: there are no workers to hold";
#endif
    ForcedProcessors forced(4);
    HeldWorkers held;
    const auto caller = std::this_thread::get_id();
    std::vector<std::thread::id> threads;
    ParallelApply(8, [&](size_t) { threads.push_back(std::this_thread::get_id()); });
    EXPECT_EQ(threads, std::vector<std::thread::id>(8, caller));

    Recorder recorder;
    Quorin_PieceClosure closure{&Recorder::Record, &recorder};
    ASSERT_EQ(_QuorinDispatchApplyOnRows(13, 7, &closure), kQuorinSuccess);
    EXPECT_EQ(recorder.sorted(), (std::vector<Piece>{{0, 0, 0, 13, 1}, {1, 0, 1, 13, 1}, {2, 0, 2, 13, 1}, {3, 0, 3, 13, 4}}));

    threads.clear();
    EXPECT_EQ(RunBandsOnGroup(0, 64000, 101, [&](size_t, size_t) { threads.push_back(std::this_thread::get_id()); }),
              kQuorinSuccess);
    EXPECT_EQ(threads, std::vector<std::thread::id>(threads.size(), caller));

    CountingWork work(10, 64000);
    QuorinRunRowWork(work, 0);
    EXPECT_EQ(work.jobs(), (std::vector<std::pair<size_t, size_t>>{{0, 3}, {3, 3}, {6, 3}, {9, 1}}));
    EXPECT_EQ(work.threads_, std::vector<std::thread::id>(4, caller));
    held.release(7 + 3 + 3 + 3);  // one worker asked for by each call per index but its own
}

// A late worker keeps its call's shared record until it wakes. When every
// record is held so, a further call runs on the caller alone and asks for no
// worker.
TEST(Dispatch, WithEveryRecordHeldACallRunsOnTheCallerAlone) {
#if QUORIN_WITHOUT_LIBDISPATCH
    GTEST_SKIP() << "built without libdispatch: there are no workers to hold";
#endif
    ForcedProcessors forced(2);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // earlier tests' late workers let go
    HeldWorkers held;
    const size_t calls = detail::kSharedRuns + 16;
    std::vector<size_t> runs(2, 0);  // touched by the caller only: the workers are held
    for (size_t c = 0; c < calls; ++c) ParallelApply(2, [&](size_t i) { ++runs[i]; });
    EXPECT_EQ(runs, std::vector<size_t>(2, calls));
    held.release(detail::kSharedRuns);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(HeldWorkers::entered(), detail::kSharedRuns);  // one worker per record, none for the calls after
}

}  // namespace
}  // namespace quorin
