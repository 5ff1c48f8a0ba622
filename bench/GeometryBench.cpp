// Scaling and quarter turns beside OpenCV, libyuv and libvips doing the same
// job: 4096 -> 2048 (shrink) and 1024 -> 2048 (grow) in both arithmetics
// against cv::resize (cubic, Lanczos-4, area), libyuv ARGBScale (box,
// bilinear) and libvips (vips_reduce cubic and Lanczos-3 shrinking,
// vips_resize Lanczos-3 growing); quarter turns of 4096 x 4096 against
// cv::rotate, libyuv ARGBRotate and vips_rot. The libvips rows take the
// result into memory the library allocates, as its callers do.
// Scaling never reads the single-threaded flag, so its single-threaded rows
// pretend the machine has one processor. Scaling rows pass scratch memory of
// the queried size, made once, as a caller that scales repeatedly would: a
// fresh allocation each call would time the system's page faults. Rows come
// from the members' tables.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "Core/Dispatch.h"
#include "Geometry/GeometryMembers.h"

#ifdef QUORIN_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef QUORIN_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif
#ifdef QUORIN_BENCH_OPENCV_IMGPROC
#include <opencv2/imgproc.hpp>
#endif
#ifdef QUORIN_BENCH_VIPS
#include <vips/vips.h>
#endif

namespace quorin::bench {
namespace {

using geometry::Rotate90Member;
using geometry::ScaleMember;

struct Change {
    const char* name;
    size_t from, to;
};
constexpr Change kChanges[] = {{"shrink", 4096, 2048}, {"grow", 1024, 2048}};

const char kCubic[] = "OpenCV resize cubic";
const char kLanczos[] = "OpenCV resize lanczos4";
const char kArea[] = "OpenCV resize area";
const char kBox[] = "libyuv ARGBScale box";
const char kBilinear[] = "libyuv ARGBScale bilinear";
const char kCvRotate[] = "OpenCV rotate 90";
const char kYuvRotate[] = "libyuv ARGBRotate 90";
const char kVipsCubic[] = "libvips reduce cubic";
const char kVipsLanczos[] = "libvips reduce lanczos3";
const char kVipsResize[] = "libvips resize lanczos3";
const char kVipsRotate[] = "libvips rot 90";

std::string PeerName(const char* peer, const Change& c) { return std::string(peer) + "." + c.name; }

struct Images {
    size_t from, to, pixelBytes;
    bool floats;
    std::unique_ptr<OwnedImage> src{}, dest{};
    std::vector<uint8_t> scratch{};
    void prepare() {
        if (src) return;
        src = std::make_unique<OwnedImage>(from, from, pixelBytes, 1);
        dest = std::make_unique<OwnedImage>(to, to, pixelBytes, 2);
        if (floats) src->fillUnitFloats();
    }
    // Scratch for the larger of the two arithmetics' needs.
    void prepareScratch(const ScaleMember& m) {
        prepare();
        for (const Quorin_Flags quality : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_HighQualityResampling}}) {
            const Quorin_Error size = m.entry(&src->buffer, &dest->buffer, nullptr, quality | kQuorinFlag_QueryTempSize);
            if (size < 0) std::abort();
            if (static_cast<size_t>(size) > scratch.size()) scratch.assign(static_cast<size_t>(size), 0);
        }
    }
};

void Require(const char* name, Quorin_Error error) {
    if (error != kQuorinSuccess) {  // a refused call would be timed as a fast one
        std::fprintf(stderr, "%s refused the benchmark's images: %d\n", name, error);
        std::abort();
    }
}

// Single-threaded rows of the scaling members: one processor, as the split sees it.
void OneProcessor() { SetProcessorCountForTest(1); }
void AllProcessors() { SetProcessorCountForTest(0); }

bool Benchmarked(const ScaleMember& m) {
    return &m == &geometry::kScaleARGB8888 || &m == &geometry::kScalePlanar8 || &m == &geometry::kScaleARGBFFFF;
}

void RegisterScaleRows() {
    for (const ScaleMember* member : geometry::kScaleMembers) {
        if (!Benchmarked(*member)) continue;
        const ScaleMember& m = *member;
        const size_t bytes = m.format.pixelBytes();
        for (const Change& c : kChanges) {
            auto images = std::make_shared<Images>(Images{c.from, c.to, bytes, m.format.sample == SampleKind::F32});
            for (const Quorin_Flags quality : {Quorin_Flags{0}, Quorin_Flags{kQuorinFlag_HighQualityResampling}}) {
                const std::string operation =
                    std::string(m.name).substr(6) + "." + c.name + (quality ? ".hq" : "");
                const size_t moved = (c.from * c.from + c.to * c.to) * bytes;
                const std::string peer = &m == &geometry::kScaleARGB8888 && !quality
                                             ? PeerName(c.to < c.from ? kCubic : kLanczos, c)
                                             : std::string();
                const auto body = [images, &m, quality] {
                    Require(m.name,
                            m.entry(&images->src->buffer, &images->dest->buffer, images->scratch.data(), quality));
                };
                RegisterRow({operation, c.to, c.to, Split::Single, moved}, body, peer,
                            [images, &m] { images->prepareScratch(m), OneProcessor(); }, AllProcessors);
                // The same on each other vector target and with the scalar
                // kernels, one processor for the call alone.
                if (&m == &geometry::kScaleARGB8888)
                    RegisterScalarRow({operation, c.to, c.to, Split::Single, moved},
                                      [body] { OneProcessor(), body(), AllProcessors(); },
                                      [images, &m] { images->prepareScratch(m); });
                RegisterRow({operation, c.to, c.to, Split::Default, moved}, body, {},
                            [images, &m] { images->prepareScratch(m); });
            }
        }
    }
}

void RegisterRotateRows() {
    constexpr size_t kSide = 4096;
    for (const Rotate90Member* member : geometry::kRotate90Members) {
        const Rotate90Member& m = *member;
        const size_t bytes = m.format.pixelBytes();
        auto images = std::make_shared<Images>(Images{kSide, kSide, bytes, m.format.sample == SampleKind::F32});
        const std::string operation = std::string(m.name).substr(6) + ".1";
        RegisterRow({operation, kSide, kSide, Split::Single, kSide * kSide * bytes * 2},
                    [images, &m] {
                        Require(m.name, m.entry(&images->src->buffer, &images->dest->buffer, 1, nullptr, 0));
                    },
                    &m == &geometry::kRotate90ARGB8888 ? kCvRotate : "", [images] { images->prepare(); });
        if (&m == &geometry::kRotate90ARGB8888)
            RegisterScalarRow({operation, kSide, kSide, Split::Single, kSide * kSide * bytes * 2},
                              [images, &m] {
                                  Require(m.name, m.entry(&images->src->buffer, &images->dest->buffer, 1, nullptr, 0));
                              },
                              [images] { images->prepare(); });
    }
}

#ifdef QUORIN_BENCH_VIPS
// One libvips operation on the 8-bit source, through the shared runner.
template <class Operation>
void RegisterVipsRow(const std::string& name, const std::shared_ptr<Images>& images, size_t moved,
                     Operation operation) {
    RegisterRow({name, images->to, images->to, Split::Single, moved},
                [images, operation] {
                    RunVips(images->src->buffer.data, images->from, images->from, 4, VIPS_FORMAT_UCHAR, operation);
                },
                {}, [images] { StartVips(), images->prepare(); });
}
#endif

void RegisterPeerRows() {
    for (const Change& c : kChanges) {
        auto images = std::make_shared<Images>(Images{c.from, c.to, 4, false});
        const auto prepare = [images] { images->prepare(); };
        const size_t moved = (c.from * c.from + c.to * c.to) * 4;
        const int from = static_cast<int>(c.from), to = static_cast<int>(c.to);
        (void)from, (void)to, (void)prepare, (void)moved;
#ifdef QUORIN_BENCH_OPENCV_IMGPROC
        const struct {
            const char* name;
            int interpolation;
        } kResizes[] = {{kCubic, cv::INTER_CUBIC}, {kLanczos, cv::INTER_LANCZOS4}, {kArea, cv::INTER_AREA}};
        for (const auto& r : kResizes) {
            if (r.interpolation == cv::INTER_AREA && c.to > c.from) continue;
            const int interpolation = r.interpolation;
            RegisterRow({PeerName(r.name, c), c.to, c.to, Split::Single, moved},
                        [images, from, to, interpolation] {
                            const cv::Mat src(from, from, CV_8UC4, images->src->buffer.data);
                            cv::Mat dest(to, to, CV_8UC4, images->dest->buffer.data);
                            cv::resize(src, dest, dest.size(), 0, 0, interpolation);
                        },
                        {}, [images] { images->prepare(), cv::setNumThreads(1); });
        }
#endif
#ifdef QUORIN_BENCH_LIBYUV
        for (const auto& [name, filter] : {std::pair{kBox, libyuv::kFilterBox}, std::pair{kBilinear, libyuv::kFilterBilinear}}) {
            const libyuv::FilterMode mode = filter;
            RegisterRow({PeerName(name, c), c.to, c.to, Split::Single, moved},
                        [images, from, to, mode] {
                            libyuv::ARGBScale(static_cast<const uint8_t*>(images->src->buffer.data), from * 4, from,
                                              from, static_cast<uint8_t*>(images->dest->buffer.data), to * 4, to, to,
                                              mode);
                        },
                        {}, prepare);
        }
#endif
#ifdef QUORIN_BENCH_VIPS
        if (c.to < c.from) {
            const double factor = static_cast<double>(c.from) / static_cast<double>(c.to);
            for (const auto& [name, kernel] : {std::pair{kVipsCubic, VIPS_KERNEL_CUBIC}, std::pair{kVipsLanczos, VIPS_KERNEL_LANCZOS3}}) {
                const VipsKernel k = kernel;
                RegisterVipsRow(PeerName(name, c), images, moved, [factor, k](VipsImage* in, VipsImage** out) {
                    return vips_reduce(in, out, factor, factor, "kernel", k, nullptr);
                });
            }
        } else {
            const double factor = static_cast<double>(c.to) / static_cast<double>(c.from);
            RegisterVipsRow(PeerName(kVipsResize, c), images, moved, [factor](VipsImage* in, VipsImage** out) {
                return vips_resize(in, out, factor, "kernel", VIPS_KERNEL_LANCZOS3, nullptr);
            });
        }
#endif
    }
    constexpr size_t kSide = 4096;
    auto turn = std::make_shared<Images>(Images{kSide, kSide, 4, false});
    const int side = static_cast<int>(kSide);
    (void)side, (void)turn;
#ifdef QUORIN_BENCH_OPENCV
    RegisterRow({kCvRotate, kSide, kSide, Split::Single, kSide * kSide * 8},
                [turn, side] {
                    const cv::Mat src(side, side, CV_8UC4, turn->src->buffer.data);
                    cv::Mat dest(side, side, CV_8UC4, turn->dest->buffer.data);
                    cv::rotate(src, dest, cv::ROTATE_90_COUNTERCLOCKWISE);
                },
                kYuvRotate, [turn] { turn->prepare(), cv::setNumThreads(1); });
#endif
#ifdef QUORIN_BENCH_LIBYUV
    RegisterRow({kYuvRotate, kSide, kSide, Split::Single, kSide * kSide * 8},
                [turn, side] {
                    libyuv::ARGBRotate(static_cast<const uint8_t*>(turn->src->buffer.data), side * 4,
                                       static_cast<uint8_t*>(turn->dest->buffer.data), side * 4, side, side,
                                       libyuv::kRotate270);
                },
                {}, [turn] { turn->prepare(); });
#endif
#ifdef QUORIN_BENCH_VIPS
    RegisterVipsRow(kVipsRotate, turn, kSide * kSide * 8,
                    [](VipsImage* in, VipsImage** out) { return vips_rot(in, out, VIPS_ANGLE_D270, nullptr); });
#endif
}

const RegisterFamily kGeometry([] {
    RegisterScaleRows();
    RegisterRotateRows();
    RegisterPeerRows();
});

}  // namespace
}  // namespace quorin::bench
