// The three-channel matrix beside memcpy and, where installed, libyuv and
// OpenCV doing the same job: four 8-bit channels to 565 against ARGBToRGB565
// and cvtColor BGRA2BGR565, to three bytes against ARGBToRGB24 / ARGBToRAW
// and cvtColor BGRA2BGR, and the 16-bit and float cells against cvtColor on
// 16U and 32F images. Rows come from the matrix's member table.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "Conversion/PackedMembers.h"

#ifdef QUORIN_BENCH_LIBYUV
#include <libyuv.h>
#endif
#if defined(QUORIN_BENCH_OPENCV) && defined(QUORIN_BENCH_OPENCV_IMGPROC)
#include <opencv2/imgproc.hpp>
#define QUORIN_BENCH_CVTCOLOR 1
#endif

namespace quorin::bench {
namespace {

using packed::MatrixMember;

const char kToRGB565[] = "libyuv ARGBToRGB565";
const char kToRGB24[] = "libyuv ARGBToRGB24";
const char kToRAW[] = "libyuv ARGBToRAW";
const char kCv565[] = "OpenCV cvtColor BGRA2BGR565";
const char kCvBGR[] = "OpenCV cvtColor BGRA2BGR";
const char kCvBGR16[] = "OpenCV cvtColor BGRA2BGR 16U";
const char kCvBGRF[] = "OpenCV cvtColor BGRA2BGR 32F";
const char kFromRGB565[] = "libyuv RGB565ToARGB";
const char kFromRGB24[] = "libyuv RGB24ToARGB";
const char kCvFrom565[] = "OpenCV cvtColor BGR5652BGRA";
const char kCvFromBGR[] = "OpenCV cvtColor BGR2BGRA";

const char* PeerOf(const packed::AlphaMember& m) {
    const std::string name = m.name;
    if (name == "QuorinConvert_RGB565toARGB8888") return kFromRGB565;
    if (name == "QuorinConvert_RGB888toARGB8888") return kFromRGB24;
    return "";
}

const char* PeerOf(const MatrixMember& m) {
    const std::string name = m.name;
    if (name == "QuorinConvert_ARGB8888toRGB565" || name == "QuorinConvert_RGBA8888toRGB565") return kToRGB565;
    if (name == "QuorinConvert_ARGB8888toRGB888" || name == "QuorinConvert_RGBA8888toRGB888") return kToRGB24;
    if (name == "xQuorinConvert_ARGB8888toBGR888") return kToRAW;
    if (name == "QuorinConvert_RGBA16UtoRGB16U" || name == "QuorinConvert_ARGB16UtoRGB16U") return kCvBGR16;
    if (name == "QuorinConvert_RGBAFFFFtoRGBFFF" || name == "QuorinConvert_ARGBFFFFtoRGBFFF") return kCvBGRF;
    return "";
}

// The cells timed with the speed-ups off and on each vector target too:
// those with a peer, and one of each kind of kernel without (words into
// three bytes, words into 16-bit samples, 16-bit samples into bytes, bytes
// into words).
bool WithoutPeerOnEveryTarget(const std::string& name) {
    for (const char* cell : {"QuorinConvert_RGB565toRGB888", "xQuorinConvert_RGB565toRGB16U",
                             "xQuorinConvert_RGB16UtoRGB888", "xQuorinConvert_RGB888toRGB565"})
        if (name == cell) return true;
    return false;
}
template <class M>
bool WantsScalarRow(const M& m) { return PeerOf(m)[0] != '\0' || WithoutPeerOnEveryTarget(m.name); }

struct Images {
    size_t side;
    std::unique_ptr<OwnedImage> src, dest;
    void prepare(size_t inBytes, size_t outBytes, bool floats) {
        if (src) return;
        src = std::make_unique<OwnedImage>(side, side, inBytes, 1);
        dest = std::make_unique<OwnedImage>(side, side, outBytes, 2);
        if (floats) src->fillUnitFloats();
    }
};

void Run(const MatrixMember& m, const Quorin_Buffer& src, const Quorin_Buffer& dest, Quorin_Flags flags) {
    if (const Quorin_Error error = m.run(&src, &dest, flags)) {  // a refused call would be timed as a fast one
        std::fprintf(stderr, "%s refused the benchmark's images: %d\n", m.name, error);
        std::abort();
    }
}

[[maybe_unused]] void RegisterPeer(const char* name, size_t side, size_t inBytes, size_t outBytes, bool floats,
                                   void (*body)(const Quorin_Buffer& src, const Quorin_Buffer& dest, int side),
                                   const char* peer = "", void (*beforeRow)() = nullptr) {
    auto images = std::make_shared<Images>(Images{side, nullptr, nullptr});
    RegisterRow({name, side, side, Split::Single, side * side * (inBytes + outBytes)},
                [images, body, side] { body(images->src->buffer, images->dest->buffer, static_cast<int>(side)); },
                peer, [images, inBytes, outBytes, floats, beforeRow] {
                    images->prepare(inBytes, outBytes, floats);
                    if (beforeRow) beforeRow();
                });
}

const RegisterFamily kPacked([] {
    for (const size_t size : StandardSizes()) {
        const size_t pixels = size * size;
        for (const MatrixMember& m : packed::kMatrixMembers) {
            const std::string operation = std::string(m.name).substr(m.name[0] == 'x' ? 7 : 6);
            const size_t in = m.from.pixelBytes(), out = m.to.pixelBytes();
            const bool floats = m.from.sample == SampleKind::F32;
            auto images = std::make_shared<Images>(Images{size, nullptr, nullptr});
            const auto prepare = [images, in, out, floats] { images->prepare(in, out, floats); };
            const size_t moved = pixels * (in + out);
            for (const Split split : {Split::Single, Split::Default}) {
                const Quorin_Flags flags = FlagsOf(split);
                RegisterRow({operation, size, size, split, moved},
                            [images, &m, flags] { Run(m, images->src->buffer, images->dest->buffer, flags); },
                            PeerOf(m), prepare);
            }
            if (WantsScalarRow(m))
                RegisterScalarRow({operation, size, size, Split::Single, moved}, [images, &m] {
                    Run(m, images->src->buffer, images->dest->buffer, kQuorinFlag_SingleThreaded);
                }, prepare);
            if (WantsPairRow(size))
                RegisterPairRow({operation, size, size, Split::Pair, moved},
                                [images, &m](size_t first, size_t rows) {
                                    Run(m, RowsOf(images->src->buffer, first, rows),
                                        RowsOf(images->dest->buffer, first, rows), kQuorinFlag_SingleThreaded);
                                },
                                prepare);
        }
        // Adding alpha: a constant, no premultiplication.
        for (const packed::AlphaMember& m : packed::kAlphaMembers) {
            const std::string operation = std::string(m.name).substr(6);
            const size_t in = m.from.pixelBytes(), out = m.to.pixelBytes();
            auto images = std::make_shared<Images>(Images{size, nullptr, nullptr});
            const bool floats = m.from.sample == SampleKind::F32;
            const auto prepare = [images, in, out, floats] { images->prepare(in, out, floats); };
            const auto call = [&m](const Quorin_Buffer& src, const Quorin_Buffer& dest, Quorin_Flags flags) {
                if (m.run({&src, nullptr, 0.5, &dest, 0, flags}) != kQuorinSuccess) std::abort();
            };
            for (const Split split : {Split::Single, Split::Default})
                RegisterRow({operation, size, size, split, pixels * (in + out)},
                            [images, call, flags = FlagsOf(split)] {
                                call(images->src->buffer, images->dest->buffer, flags);
                            },
                            PeerOf(m), prepare);
            if (WantsScalarRow(m))
                RegisterScalarRow({operation, size, size, Split::Single, pixels * (in + out)},
                                  [images, call] {
                                      call(images->src->buffer, images->dest->buffer, kQuorinFlag_SingleThreaded);
                                  },
                                  prepare);
            if (WantsPairRow(size))
                RegisterPairRow({operation, size, size, Split::Pair, pixels * (in + out)},
                                [images, call](size_t first, size_t rows) {
                                    call(RowsOf(images->src->buffer, first, rows),
                                         RowsOf(images->dest->buffer, first, rows), kQuorinFlag_SingleThreaded);
                                },
                                prepare);
        }
#ifdef QUORIN_BENCH_LIBYUV
        using B = const Quorin_Buffer&;
        RegisterPeer(kFromRGB565, size, 2, 4, false, [](B s, B d, int side) {
            libyuv::RGB565ToARGB(static_cast<const uint8_t*>(s.data), side * 2, static_cast<uint8_t*>(d.data),
                                 side * 4, side, side);
        }, kCvFrom565);
        RegisterPeer(kFromRGB24, size, 3, 4, false, [](B s, B d, int side) {
            libyuv::RGB24ToARGB(static_cast<const uint8_t*>(s.data), side * 3, static_cast<uint8_t*>(d.data),
                                side * 4, side, side);
        }, kCvFromBGR);
        RegisterPeer(kToRGB565, size, 4, 2, false, [](B s, B d, int side) {
            libyuv::ARGBToRGB565(static_cast<const uint8_t*>(s.data), side * 4, static_cast<uint8_t*>(d.data),
                                 side * 2, side, side);
        }, kCv565);
        RegisterPeer(kToRGB24, size, 4, 3, false, [](B s, B d, int side) {
            libyuv::ARGBToRGB24(static_cast<const uint8_t*>(s.data), side * 4, static_cast<uint8_t*>(d.data),
                                side * 3, side, side);
        }, kCvBGR);
        RegisterPeer(kToRAW, size, 4, 3, false, [](B s, B d, int side) {
            libyuv::ARGBToRAW(static_cast<const uint8_t*>(s.data), side * 4, static_cast<uint8_t*>(d.data),
                              side * 3, side, side);
        });
#endif
#ifdef QUORIN_BENCH_CVTCOLOR
        using C = const Quorin_Buffer&;
        // These rows are single-threaded like the libyuv rows: OpenCV would
        // otherwise split cvtColor over every core.
        const auto oneThread = [] { cv::setNumThreads(1); };
        RegisterPeer(kCv565, size, 4, 2, false, [](C s, C d, int side) {
            cv::Mat dest(side, side, CV_8UC2, d.data);
            cv::cvtColor(cv::Mat(side, side, CV_8UC4, s.data), dest, cv::COLOR_BGRA2BGR565);
        }, "", oneThread);
        RegisterPeer(kCvBGR, size, 4, 3, false, [](C s, C d, int side) {
            cv::Mat dest(side, side, CV_8UC3, d.data);
            cv::cvtColor(cv::Mat(side, side, CV_8UC4, s.data), dest, cv::COLOR_BGRA2BGR);
        }, "", oneThread);
        RegisterPeer(kCvFrom565, size, 2, 4, false, [](C s, C d, int side) {
            cv::Mat dest(side, side, CV_8UC4, d.data);
            cv::cvtColor(cv::Mat(side, side, CV_8UC2, s.data), dest, cv::COLOR_BGR5652BGRA);
        }, "", oneThread);
        RegisterPeer(kCvFromBGR, size, 3, 4, false, [](C s, C d, int side) {
            cv::Mat dest(side, side, CV_8UC4, d.data);
            cv::cvtColor(cv::Mat(side, side, CV_8UC3, s.data), dest, cv::COLOR_BGR2BGRA);
        }, "", oneThread);
        RegisterPeer(kCvBGR16, size, 8, 6, false, [](C s, C d, int side) {
            cv::Mat dest(side, side, CV_16UC3, d.data);
            cv::cvtColor(cv::Mat(side, side, CV_16UC4, s.data), dest, cv::COLOR_BGRA2BGR);
        }, "", oneThread);
        RegisterPeer(kCvBGRF, size, 16, 12, true, [](C s, C d, int side) {
            cv::Mat dest(side, side, CV_32FC3, d.data);
            cv::cvtColor(cv::Mat(side, side, CV_32FC4, s.data), dest, cv::COLOR_BGRA2BGR);
        }, "", oneThread);
#endif
    }
});

}  // namespace
}  // namespace quorin::bench
