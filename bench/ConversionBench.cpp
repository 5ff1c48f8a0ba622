// Planar and interleaved conversions beside memcpy of the same bytes and, where
// OpenCV is installed, cv::split / cv::merge on the same layouts and
// cv::Mat::convertTo over the same number of elements for the range members.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "BenchSupport.h"

#if QUORIN_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace quorin::bench {
namespace {

const float kMax[4] = {1.0f, 1.0f, 1.0f, 1.0f};
const float kMin[4] = {0.0f, 0.0f, 0.0f, 0.0f};

enum class Content { Unknown, Bytes, UnitFloats };

// The memory every row of one image size shares: an interleaved image of up
// to 16 bytes per pixel and four planes of up to 4 bytes per sample. An area
// is filled when a row's prepare step needs it as input with other contents.
class Workspace {
public:
    // One per size, kept for the whole run: with interleaved repetitions the
    // sizes alternate, and refilling on every switch would dominate the run.
    static Workspace& For(size_t width, size_t height) {
        static std::map<std::pair<size_t, size_t>, std::unique_ptr<Workspace>> bySize;
        std::unique_ptr<Workspace>& w = bySize[{width, height}];
        if (!w) w.reset(new Workspace(width, height));
        return *w;
    }

    // The interleaved image (k = 4) or plane k, as a tight record.
    Quorin_Buffer area(size_t k, size_t pixelBytes, Content input) {
        Area& a = areas_[k];
        if (input == Content::Unknown) a.content = Content::Unknown;  // about to be written
        else if (a.content != input) a.fill(input);
        return Quorin_Buffer{a.bytes.get(), height_, width_, width_ * pixelBytes};
    }

private:
    struct Area {
        std::unique_ptr<uint8_t[]> bytes;
        size_t size = 0;
        Content content = Content::Unknown;

        // Tiles a 64 KiB block of varied bytes (or of floats in [0, 1]) over the area.
        void fill(Content kind) {
            std::vector<uint8_t> tile(65536);
            uint32_t state = 12345;
            for (size_t i = 0; i < tile.size(); i += 4) {
                state = state * 1664525u + 1013904223u;
                const float unit = static_cast<float>(state >> 8) / 16777215.0f;
                if (kind == Content::UnitFloats) std::memcpy(&tile[i], &unit, 4);
                else std::memcpy(&tile[i], &state, 4);
            }
            for (size_t at = 0; at < size; at += tile.size())
                std::memcpy(bytes.get() + at, tile.data(), std::min(tile.size(), size - at));
            content = kind;
        }
    };

    Workspace(size_t width, size_t height) : width_(width), height_(height) {
        for (size_t k = 0; k < 5; ++k) {
            areas_[k].size = width * height * (k == 4 ? 16 : 4);
            areas_[k].bytes.reset(new (std::align_val_t(64)) uint8_t[areas_[k].size]);
            std::memset(areas_[k].bytes.get(), 0, areas_[k].size);  // no page faults in the timed runs
        }
    }

    size_t width_, height_;
    Area areas_[5];
};

using Planes = const Quorin_Buffer* const*;
using Call = Quorin_Error (*)(const Quorin_Buffer* image, Planes planes, Quorin_Flags flags);

struct Member {
    const char* name;
    bool merge;  // planes into pixels
    size_t planes, planeBytes, pixelBytes;
    Content input;
    const char* peer;  // the OpenCV row doing the same job
    Call call;
};

using I = const Quorin_Buffer*;
using F = Quorin_Flags;
const Member kMembers[] = {
    {"Planar8toARGB8888", true, 4, 1, 4, Content::Bytes, "cv.merge.8UC4",
     [](I i, Planes p, F f) { return QuorinConvert_Planar8toARGB8888(p[0], p[1], p[2], p[3], i, f); }},
    {"ARGB8888toPlanar8", false, 4, 1, 4, Content::Bytes, "cv.split.8UC4",
     [](I i, Planes p, F f) { return QuorinConvert_ARGB8888toPlanar8(i, p[0], p[1], p[2], p[3], f); }},
    {"Planar8toRGB888", true, 3, 1, 3, Content::Bytes, "cv.merge.8UC3",
     [](I i, Planes p, F f) { return QuorinConvert_Planar8toRGB888(p[0], p[1], p[2], i, f); }},
    {"XRGB8888ToPlanar8", false, 3, 1, 4, Content::Bytes, "cv.split.8UC4",
     [](I i, Planes p, F f) { return QuorinConvert_XRGB8888ToPlanar8(i, p[0], p[1], p[2], f); }},
    {"Planar16UtoARGB16U", true, 4, 2, 8, Content::Bytes, "cv.merge.16UC4",
     [](I i, Planes p, F f) { return QuorinConvert_Planar16UtoARGB16U(p[0], p[1], p[2], p[3], i, f); }},
    {"ARGB16UtoPlanar16U", false, 4, 2, 8, Content::Bytes, "cv.split.16UC4",
     [](I i, Planes p, F f) { return QuorinConvert_ARGB16UtoPlanar16U(i, p[0], p[1], p[2], p[3], f); }},
    {"Planar16UtoRGB16U", true, 3, 2, 6, Content::Bytes, "cv.merge.16UC3",
     [](I i, Planes p, F f) { return QuorinConvert_Planar16UtoRGB16U(p[0], p[1], p[2], i, f); }},
    {"RGB16UtoPlanar16U", false, 3, 2, 6, Content::Bytes, "cv.split.16UC3",
     [](I i, Planes p, F f) { return QuorinConvert_RGB16UtoPlanar16U(i, p[0], p[1], p[2], f); }},
    {"PlanarFtoARGBFFFF", true, 4, 4, 16, Content::UnitFloats, "cv.merge.32FC4",
     [](I i, Planes p, F f) { return QuorinConvert_PlanarFtoARGBFFFF(p[0], p[1], p[2], p[3], i, f); }},
    {"ARGBFFFFtoPlanarF", false, 4, 4, 16, Content::UnitFloats, "cv.split.32FC4",
     [](I i, Planes p, F f) { return QuorinConvert_ARGBFFFFtoPlanarF(i, p[0], p[1], p[2], p[3], f); }},
    {"PlanarFtoRGBFFF", true, 3, 4, 12, Content::UnitFloats, "cv.merge.32FC3",
     [](I i, Planes p, F f) { return QuorinConvert_PlanarFtoRGBFFF(p[0], p[1], p[2], i, f); }},
    {"XRGBFFFFToPlanarF", false, 3, 4, 16, Content::UnitFloats, "cv.split.32FC4",
     [](I i, Planes p, F f) { return QuorinConvert_XRGBFFFFToPlanarF(i, p[0], p[1], p[2], f); }},
    {"Planar8ToARGBFFFF", true, 4, 1, 16, Content::Bytes, "cv.convertTo.8U-32F",
     [](I i, Planes p, F f) { return QuorinConvert_Planar8ToARGBFFFF(p[0], p[1], p[2], p[3], i, kMax, kMin, f); }},
    {"ARGB8888toPlanarF", false, 4, 4, 4, Content::Bytes, "cv.convertTo.8U-32F",
     [](I i, Planes p, F f) { return QuorinConvert_ARGB8888toPlanarF(i, p[0], p[1], p[2], p[3], kMax, kMin, f); }},
    {"PlanarFToARGB8888", true, 4, 4, 4, Content::UnitFloats, "cv.convertTo.32F-8U",
     [](I i, Planes p, F f) { return QuorinConvert_PlanarFToARGB8888(p[0], p[1], p[2], p[3], i, kMax, kMin, f); }},
    {"ARGBFFFFtoPlanar8", false, 4, 1, 16, Content::UnitFloats, "cv.convertTo.32F-8U",
     [](I i, Planes p, F f) { return QuorinConvert_ARGBFFFFtoPlanar8(i, p[0], p[1], p[2], p[3], kMax, kMin, f); }},
};

// A row's buffers, made by its prepare step (outside the timing) from the
// workspace of its size.
struct MemberBuffers {
    Quorin_Buffer image{}, planes[4]{};
    const Quorin_Buffer* records[4]{};
};

void RegisterMember(const Member& m, size_t size, Split split) {
    const size_t pixels = size * size;
    const RowShape shape{m.name, size, size, split, pixels * (m.planes * m.planeBytes + m.pixelBytes)};
    const auto buffers = std::make_shared<MemberBuffers>();
    const auto prepare = [&m, buffers, size] {
        Workspace& ws = Workspace::For(size, size);
        for (size_t k = 0; k < m.planes; ++k) {
            buffers->planes[k] = ws.area(k, m.planeBytes, m.merge ? m.input : Content::Unknown);
            buffers->records[k] = &buffers->planes[k];
        }
        buffers->image = ws.area(4, m.pixelBytes, m.merge ? Content::Unknown : m.input);
    };
    if (split == Split::Pair) {
        RegisterPairRow(
            shape,
            [&m, buffers](size_t first, size_t rows) {
                const Quorin_Buffer image = RowsOf(buffers->image, first, rows);
                Quorin_Buffer planes[4];
                const Quorin_Buffer* records[4]{};
                for (size_t k = 0; k < m.planes; ++k) {
                    planes[k] = RowsOf(buffers->planes[k], first, rows);
                    records[k] = &planes[k];
                }
                if (m.call(&image, records, kQuorinFlag_SingleThreaded) != kQuorinSuccess) std::abort();
            },
            prepare);
        return;
    }
    const auto call = [&m, buffers, split] {
        if (m.call(&buffers->image, buffers->records, FlagsOf(split)) != kQuorinSuccess) std::abort();
    };
    RegisterRow(shape, call, m.peer, prepare);
    if (split == Split::Single) RegisterScalarRow(shape, call, prepare);
}

#if QUORIN_BENCH_OPENCV
struct Peer {
    const char* name;
    enum Kind { Merge, Split, Convert } kind;
    int depth, channels;  // for Convert: source depth and target depth
    int toDepth;
};
const Peer kPeers[] = {
    {"cv.merge.8UC4", Peer::Merge, CV_8U, 4, 0},   {"cv.split.8UC4", Peer::Split, CV_8U, 4, 0},
    {"cv.merge.8UC3", Peer::Merge, CV_8U, 3, 0},   {"cv.merge.16UC4", Peer::Merge, CV_16U, 4, 0},
    {"cv.split.16UC4", Peer::Split, CV_16U, 4, 0}, {"cv.merge.16UC3", Peer::Merge, CV_16U, 3, 0},
    {"cv.split.16UC3", Peer::Split, CV_16U, 3, 0}, {"cv.merge.32FC4", Peer::Merge, CV_32F, 4, 0},
    {"cv.split.32FC4", Peer::Split, CV_32F, 4, 0}, {"cv.merge.32FC3", Peer::Merge, CV_32F, 3, 0},
    {"cv.convertTo.8U-32F", Peer::Convert, CV_8U, 4, CV_32F},
    {"cv.convertTo.32F-8U", Peer::Convert, CV_32F, 4, CV_8U},
};

struct PeerBuffers {
    cv::Mat interleaved, from, to;
    std::vector<cv::Mat> planes;
};

void RegisterPeer(const Peer& p, size_t size, Split split) {
    const size_t sample = CV_ELEM_SIZE1(p.depth), pixels = size * size;
    const size_t bytes = p.kind == Peer::Convert ? pixels * 4 * (sample + CV_ELEM_SIZE1(p.toDepth))
                                                 : pixels * p.channels * sample * 2;
    const auto buffers = std::make_shared<PeerBuffers>();
    RegisterRow(
        {p.name, size, size, split, bytes},
        [&p, buffers] {
            if (p.kind == Peer::Convert)
                buffers->from.convertTo(buffers->to, p.toDepth, p.depth == CV_8U ? 1.0 / 255.0 : 255.0);
            else if (p.kind == Peer::Merge)
                cv::merge(buffers->planes.data(), buffers->planes.size(), buffers->interleaved);
            else
                cv::split(buffers->interleaved, buffers->planes.data());
        },
        {},
        [&p, buffers, size, split, sample] {
            // OpenCV's own threading follows the row's split: one thread, or its default.
            cv::setNumThreads(split == Split::Single ? 1 : -1);
            Workspace& ws = Workspace::For(size, size);
            const int rows = static_cast<int>(size), cols = static_cast<int>(size);
            const Content input = p.depth == CV_32F ? Content::UnitFloats : Content::Bytes;
            if (p.kind == Peer::Convert) {
                // Four elements per pixel, as the range members convert them.
                const bool fromBytes = p.depth == CV_8U;
                const Quorin_Buffer src = ws.area(fromBytes ? 0 : 4, 4 * sample, input);
                const Quorin_Buffer dst = ws.area(fromBytes ? 4 : 0, 4 * CV_ELEM_SIZE1(p.toDepth), Content::Unknown);
                buffers->from = cv::Mat(rows, cols * 4, p.depth, src.data);
                buffers->to = cv::Mat(rows, cols * 4, p.toDepth, dst.data);
                return;
            }
            buffers->planes.clear();
            for (int k = 0; k < p.channels; ++k) {
                const Quorin_Buffer b = ws.area(k, sample, p.kind == Peer::Merge ? input : Content::Unknown);
                buffers->planes.emplace_back(rows, cols, CV_MAKETYPE(p.depth, 1), b.data);
            }
            const Quorin_Buffer image =
                ws.area(4, sample * p.channels, p.kind == Peer::Split ? input : Content::Unknown);
            buffers->interleaved = cv::Mat(rows, cols, CV_MAKETYPE(p.depth, p.channels), image.data);
        });
}
#endif

const RegisterFamily kConversion([] {
    // Rows of one size run together so the shared workspace is filled once per size.
    for (size_t size : StandardSizes()) {
        for (Split split : {Split::Single, Split::Default, Split::Pair}) {
            if (split == Split::Pair && !WantsPairRow(size)) continue;
            std::vector<std::string> peers;
            for (const Member& m : kMembers) {
                RegisterMember(m, size, split);
                if (split != Split::Pair) peers.push_back(m.peer);
            }
#if QUORIN_BENCH_OPENCV
            for (const Peer& p : kPeers)
                if (std::find(peers.begin(), peers.end(), p.name) != peers.end()) RegisterPeer(p, size, split);
#endif
        }
    }
});

}  // namespace
}  // namespace quorin::bench
