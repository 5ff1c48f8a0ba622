// Histograms beside a plain per-channel counting loop and, where installed,
// OpenCV's calcHist (four calls, one per channel), on random images and on
// a flat one (every pixel the same: the worst case for counting). Rows come
// from the family's member table.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "Histogram/HistogramMembers.h"

#ifdef QUORIN_BENCH_OPENCV_IMGPROC
#include <opencv2/imgproc.hpp>
#endif

namespace quorin::bench {
namespace {

using histogram::Member;

struct Source {
    size_t side;
    bool flat;
    bool floats;
    std::unique_ptr<OwnedImage> image;
    // A second set for the pair rows' bottom half.
    std::array<std::vector<uint32_t>, 8> counts;
    std::array<uint32_t*, 8> pointers{};

    void prepare() {
        if (image) return;
        image = std::make_unique<OwnedImage>(side, side, floats ? 16 : 4, 3);
        if (floats) image->fillUnitFloats();
        if (flat) {
            auto* bytes = static_cast<uint8_t*>(image->buffer.data);
            for (size_t i = 0; i < image->bytes.size(); ++i) bytes[i] = bytes[i % (floats ? 16 : 4)];
        }
        for (size_t c = 0; c < 8; ++c) {
            counts[c].assign(4096, 0);
            pointers[c] = counts[c].data();
        }
    }
};

void Run(const Member& m, const Quorin_Buffer& src, uint32_t* const* counts, uint32_t entries, Quorin_Flags flags) {
    if (m.run({&src, counts, entries, 0.0f, 1.0f, flags}) != kQuorinSuccess) {
        std::fprintf(stderr, "%s refused the benchmark's image\n", m.name);
        std::abort();
    }
}

// The loop a caller would write: one counter array per channel.
void PlainCount(const Quorin_Buffer& src, uint32_t* const* counts) {
    for (size_t c = 0; c < 4; ++c) std::memset(counts[c], 0, 256 * sizeof(uint32_t));
    const auto* p = static_cast<const uint8_t*>(src.data);
    for (size_t i = 0; i < src.width * src.height; ++i, p += 4) {
        ++counts[0][p[0]];
        ++counts[1][p[1]];
        ++counts[2][p[2]];
        ++counts[3][p[3]];
    }
}

// The core's ceiling for counting: four plain stores a pixel to counters its
// bytes choose, nothing loaded back. On random bytes they fall in unrelated
// cache lines, and a core that retires one such store a cycle cannot count
// faster than this row, whatever the counting scheme that keeps a counter per
// channel per pixel.
void ScatteredStores(const Quorin_Buffer& src, uint32_t* const* counts) {
    const auto* p = static_cast<const uint8_t*>(src.data);
    const size_t pixels = src.width * src.height;
    for (size_t i = 0; i < pixels; ++i, p += 4) {
        const auto value = static_cast<uint32_t>(i);
        counts[0][p[0]] = value;
        counts[1][p[1]] = value;
        counts[2][p[2]] = value;
        counts[3][p[3]] = value;
    }
    benchmark::ClobberMemory();
}

#ifdef QUORIN_BENCH_OPENCV_IMGPROC
void CalcHist(const Quorin_Buffer& src, bool floats, int bins) {
    const cv::Mat image(static_cast<int>(src.height), static_cast<int>(src.width), floats ? CV_32FC4 : CV_8UC4,
                        src.data);
    const float range[] = {0.0f, floats ? 1.0f : 256.0f};
    const float* ranges[] = {range};
    for (int c = 0; c < 4; ++c) {
        cv::Mat hist;
        cv::calcHist(&image, 1, &c, cv::Mat(), hist, 1, &bins, ranges);
    }
}
#endif

const RegisterFamily kHistograms([] {
    for (const size_t size : {size_t{4096}, size_t{1024}}) {
        const size_t pixels = size * size;
        struct Variant {
            const Member* member;
            bool flat;
            uint32_t entries;
        };
        const Variant variants[] = {{&histogram::kHistogramARGB8888, false, 256},
                                    {&histogram::kHistogramARGB8888, true, 256},
                                    {&histogram::kHistogramARGBFFFF, false, 256},
                                    {&histogram::kHistogramARGBFFFF, false, 4096}};
        for (const Variant& v : variants) {
            const Member& m = *v.member;
            const bool floats = m.format.sample == SampleKind::F32;
            const std::string suffix = floats ? (v.entries == 256 ? ".256" : ".4096") : v.flat ? ".flat" : ".random";
            // "Histogram_ARGB8888.flat": the full name would not fit the ratio table's row column.
            const std::string operation = "Histogram" + std::string(m.name).substr(26) + suffix;
            const std::string peer = floats ? "OpenCV calcHist 32F x4" + suffix
                                            : "plain channel loop" + suffix;
            auto source = std::make_shared<Source>(Source{size, v.flat, floats, nullptr, {}, {}});
            const auto prepare = [source] { source->prepare(); };
            const size_t bytes = pixels * m.format.pixelBytes();
            RegisterMemcpy(bytes);
            const uint32_t entries = v.entries;
            for (const Split split : {Split::Single, Split::Default})
                RegisterRow({operation, size, size, split, bytes},
                            [source, &m, entries, flags = FlagsOf(split)] {
                                Run(m, source->image->buffer, source->pointers.data(), entries, flags);
                            },
                            peer, prepare);
            if (size == 4096)
                RegisterPairRow({operation, size, size, Split::Pair, bytes},
                                [source, &m, entries](size_t first, size_t rows) {
                                    Run(m, RowsOf(source->image->buffer, first, rows),
                                        source->pointers.data() + (first == 0 ? 0 : 4), entries,
                                        kQuorinFlag_SingleThreaded);
                                },
                                prepare);
            if (size == 4096 && !floats)
                RegisterScalarRow({operation, size, size, Split::Single, bytes},
                                  [source, &m, entries] {
                                      Run(m, source->image->buffer, source->pointers.data(), entries,
                                          kQuorinFlag_SingleThreaded);
                                  },
                                  prepare);
            if (!floats)
                RegisterRow({peer, size, size, Split::Single, bytes},
                            [source] { PlainCount(source->image->buffer, source->pointers.data()); },
                            "OpenCV calcHist 8U x4" + suffix, prepare);
            if (!floats && !v.flat)
                RegisterRow({"ceiling.scattered-stores.random", size, size, Split::Single, bytes},
                            [source] { ScatteredStores(source->image->buffer, source->pointers.data()); }, {},
                            prepare);
#ifdef QUORIN_BENCH_OPENCV_IMGPROC
            const std::string opencv = floats ? peer : "OpenCV calcHist 8U x4" + suffix;
            RegisterRow({opencv, size, size, Split::Single, bytes},
                        [source, floats, entries] {
                            CalcHist(source->image->buffer, floats, static_cast<int>(entries));
                        },
                        {}, prepare);
#endif
#ifdef QUORIN_BENCH_VIPS
            // All four channels in one pass, as 256 bins of four bands.
            if (!floats)
                RegisterRow({"libvips hist_find" + suffix, size, size, Split::Single, bytes},
                            [source, size] {
                                RunVips(source->image->buffer.data, size, size, 4, VIPS_FORMAT_UCHAR,
                                        [](VipsImage* in, VipsImage** out) { return vips_hist_find(in, out, nullptr); });
                            },
                            {}, [prepare] { StartVips(), prepare(); });
#endif
        }
    }
});

}  // namespace
}  // namespace quorin::bench
