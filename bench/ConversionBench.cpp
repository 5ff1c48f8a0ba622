// Planar and interleaved conversions, every row of the family's member table,
// beside memcpy of the same bytes and, where
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
#include "Conversion/DepthMembers.h"
#include "Conversion/LayoutMembers.h"

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

struct Member {
    std::string name;
    bool merge;  // planes into pixels
    size_t planes, planeBytes, pixelBytes;
    Content input;
    std::string peer;  // the OpenCV row doing the same job
    const layout::Member* row;

    Quorin_Error call(const Quorin_Buffer* image, Planes planes, Quorin_Flags flags) const {
        layout::Call c{{}, 0xFF, 1.0f, kMax, kMin, flags};
        c.buffers[row->imageArgument()] = image;
        for (size_t k = 0; k < row->planeCount(); ++k) c.buffers[row->planeArgument(k)] = planes[k];
        return row->invoke(c);
    }
};

const char* DepthName(SampleKind kind) { return kind == SampleKind::U8 ? "8U" : kind == SampleKind::U16 ? "16U" : "32F"; }

// Every row of the family's member table, with the OpenCV call that does the
// same job: a merge or split of as many channels, or a depth conversion of as
// many elements.
const std::vector<Member>& Members() {
    static const std::vector<Member> members = [] {
        std::vector<Member> all;
        for (const layout::Member* m : layout::kLayoutMembers) {
            const PixelFormat& from = m->merge() ? m->planes : m->image;
            const PixelFormat& to = m->merge() ? m->image : m->planes;
            const std::string peer =
                m->takesRanges ? std::string("cv.convertTo.") + DepthName(from.sample) + "-" + DepthName(to.sample)
                               : std::string(m->merge() ? "cv.merge." : "cv.split.") + DepthName(from.sample) + "C" +
                                     std::to_string(m->image.channels);
            all.push_back({std::string(m->name).substr(std::string("QuorinConvert_").size()), m->merge(),
                           m->planeCount(), m->planes.sampleBytes(), m->image.pixelBytes(),
                           from.sample == SampleKind::F32 ? Content::UnitFloats : Content::Bytes, peer, m});
        }
        // The Q12 members: no peer does their job (OpenCV's nearest, convertTo
        // between 16S and 8U, neither clamps at 4096 nor interleaves).
        for (const layout::Member* m : layout::kQ12Members)
            all.push_back({std::string(m->name).substr(std::string("QuorinConvert_").size()), m->merge(),
                           m->planeCount(), m->planes.sampleBytes(), m->image.pixelBytes(), Content::Bytes, "", m});
        return all;
    }();
    return members;
}

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
            for (const Member& m : Members()) {
                RegisterMember(m, size, split);
                if (split != Split::Pair && !m.peer.empty()) peers.push_back(m.peer);
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
