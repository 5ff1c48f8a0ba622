// Premultiply and unpremultiply beside memcpy and, where installed, libyuv's
// attenuate / unattenuate (its ARGB keeps alpha in the last byte, as our
// RGBA8888 does; the work per pixel is the same for ARGB8888).
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Alpha/PremultiplyMembers.h"
#include "BenchSupport.h"

#ifdef QUORIN_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace quorin::bench {
namespace {

const char kAttenuate[] = "libyuv ARGBAttenuate";
const char kUnattenuate[] = "libyuv ARGBUnattenuate";

// A row of the family's member table, with what the benchmark adds to it.
struct Member {
    std::string operation;  // the entry point's name without its prefix
    const premultiply::Member* row;
    const premultiply::Member* premultiply;  // for unpremultiply: makes the source valid premultiplied data
    const char* peer;

    size_t sampleBytes() const { return row->format.sampleBytes(); }
    size_t pixelBytes() const { return row->format.pixelBytes(); }
    size_t bytesMoved(size_t pixels) const { return pixels * pixelBytes() * (row->planar() ? 3 : 2); }
};

const std::vector<Member>& Members() {
    static const std::vector<Member> members = [] {
        std::vector<Member> out;
        for (const premultiply::Member* row : premultiply::kPremultiplyMembers) {
            const bool unpremultiply = row->direction == premultiply::Direction::Unpremultiply;
            const premultiply::Member* maker = nullptr;
            for (const premultiply::Member* other : premultiply::kPremultiplyMembers)
                if (unpremultiply && other->direction == premultiply::Direction::Premultiply &&
                    other->format.sample == row->format.sample && other->format.alpha == row->format.alpha &&
                    other->format.channels == row->format.channels)
                    maker = other;
            const bool bytes = row->format.sample == SampleKind::U8 && !row->planar();
            out.push_back({std::string(row->name).substr(6), row, row->planar() ? nullptr : maker,
                           bytes ? (unpremultiply ? kUnattenuate : kAttenuate) : ""});
        }
        return out;
    }();
    return members;
}

// Source, alpha plane and destination, made before a row's first timed run so
// that runs filtered to other families do not pay for them.
struct Images {
    size_t width, height;
    std::unique_ptr<OwnedImage> src, alpha, dest;

    void prepare(const Member& m) {
        if (src) return;
        src = std::make_unique<OwnedImage>(width, height, m.pixelBytes(), 1);
        alpha = std::make_unique<OwnedImage>(width, height, m.sampleBytes(), 2);
        dest = std::make_unique<OwnedImage>(width, height, m.pixelBytes(), 3);
        if (m.row->format.sample == SampleKind::F32) src->fillUnitFloats(), alpha->fillUnitFloats();
        if (m.premultiply) m.premultiply->pixels(&src->buffer, &src->buffer, 0);
    }
};

const RegisterFamily kPremultiply([] {
    for (const size_t size : StandardSizes()) {
        for (const Member& m : Members()) {
            auto images = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
            for (const Split split : {Split::Single, Split::Default}) {
                const Quorin_Flags flags = FlagsOf(split);
                const RowShape shape{m.operation, size, size, split, m.bytesMoved(size * size)};
                const auto call = [images, &m, flags] {
                    m.row->run(&images->src->buffer, &images->alpha->buffer, &images->dest->buffer, flags);
                };
                const auto prepare = [images, &m] { images->prepare(m); };
                RegisterRow(shape, call, m.peer, prepare);
                if (split == Split::Single) RegisterScalarRow(shape, call, prepare);
            }
            if (WantsPairRow(size)) {
                RegisterPairRow(
                    {m.operation, size, size, Split::Pair, m.bytesMoved(size * size)},
                    [images, &m](size_t first, size_t rows) {
                        const Quorin_Buffer src = RowsOf(images->src->buffer, first, rows);
                        const Quorin_Buffer dest = RowsOf(images->dest->buffer, first, rows);
                        const Quorin_Buffer alpha = RowsOf(images->alpha->buffer, first, rows);
                        m.row->run(&src, &alpha, &dest, kQuorinFlag_SingleThreaded);
                    },
                    [images, &m] { images->prepare(m); });
            }
        }
#ifdef QUORIN_BENCH_LIBYUV
        // libyuv runs on the calling thread only; its input is laid out as our RGBA8888.
        for (const bool attenuate : {true, false}) {
            const Member& m = *std::find_if(Members().begin(), Members().end(), [attenuate](const Member& x) {
                return x.operation == (attenuate ? "PremultiplyData_RGBA8888" : "UnpremultiplyData_RGBA8888");
            });
            auto images = std::make_shared<Images>(Images{size, size, nullptr, nullptr, nullptr});
            RegisterRow({attenuate ? kAttenuate : kUnattenuate, size, size, Split::Single, m.bytesMoved(size * size)},
                        [images, attenuate, size] {
                            const auto* from = static_cast<const uint8_t*>(images->src->buffer.data);
                            auto* to = static_cast<uint8_t*>(images->dest->buffer.data);
                            const int side = static_cast<int>(size), stride = side * 4;
                            if (attenuate) libyuv::ARGBAttenuate(from, stride, to, stride, side, side);
                            else libyuv::ARGBUnattenuate(from, stride, to, stride, side, side);
                        },
                        {}, [images, &m] { images->prepare(m); });
        }
#endif
    }
});

}  // namespace
}  // namespace quorin::bench
