// The convolution family beside OpenCV and libyuv doing the same job: the
// general convolution with 3x3 and 5x5 binomial kernels against filter2D,
// the box blur against libyuv ARGBBlur and blur, the tent blur against
// sepFilter2D with the same triangular kernels. Rows come from the family's
// member table. The general convolution and the tent read no single-threaded
// flag and always use the grid: their single-threaded rows (and pair rows)
// pretend the machine has one processor through the test hook.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "Convolution/ConvolutionMembers.h"
#include "Core/Dispatch.h"

#ifdef QUORIN_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef QUORIN_BENCH_OPENCV_IMGPROC
#include <opencv2/imgproc.hpp>
#endif

namespace quorin::bench {
namespace {

using convolution::Member;
using convolution::Operation;

// Binomial weights 1 2 1 and 1 4 6 4 1, as a square kernel and its divisor.
struct Binomial {
    uint32_t size;
    std::vector<int16_t> weights;
    int32_t divisor;
};

Binomial MakeBinomial(uint32_t size) {
    const std::vector<int16_t> row = size == 3 ? std::vector<int16_t>{1, 2, 1} : std::vector<int16_t>{1, 4, 6, 4, 1};
    Binomial b{size, {}, 0};
    for (int16_t a : row)
        for (int16_t c : row) b.weights.push_back(static_cast<int16_t>(a * c));
    for (int16_t w : b.weights) b.divisor += w;
    return b;
}

std::string Channels(const Member& m) { return m.planar() ? "8UC1" : "8UC4"; }

std::string PeerOf(const Member& m, uint32_t size) {
    const std::string k = std::to_string(size) + "x" + std::to_string(size);
    switch (m.operation) {
        case Operation::General: return "OpenCV filter2D " + Channels(m) + " " + k;
        case Operation::Box: return m.planar() ? "OpenCV blur 8UC1 " + k : "libyuv ARGBBlur " + k;
        case Operation::Tent: return "OpenCV sepFilter2D " + Channels(m) + " " + k;
    }
    return "";
}

struct Images {
    size_t side, bytes;
    std::unique_ptr<OwnedImage> src, dest;
    std::vector<uint8_t> scratch;
    void prepare() {
        if (src) return;
        src = std::make_unique<OwnedImage>(side, side, bytes, 1);
        dest = std::make_unique<OwnedImage>(side, side, bytes, 2);
        scratch.assign(side * side * bytes, 0);
    }
};

// Box and tent get the caller's scratch, as libyuv gets its sum table: an
// allocation of the image's size per call would time the system's page
// faults, not the filter.
void Run(const Member& m, const Binomial& kernel, const Quorin_Buffer& src, const Quorin_Buffer& dest,
         Quorin_Flags flags, void* scratch = nullptr) {
    const Quorin_Error error = m.run(
        {&src, &dest, scratch, 0, 0, kernel.weights.data(), kernel.size, kernel.size, kernel.divisor, flags});
    if (error != kQuorinSuccess) {  // a refused call would be timed as a fast one
        std::fprintf(stderr, "%s refused the benchmark's images: %d\n", m.name, error);
        std::abort();
    }
}

// Single-threaded and pair rows run on one pretended processor; default rows on all.
std::function<void()> WithProcessors(unsigned count, std::function<void()> prepare) {
    return [count, prepare] {
        prepare();
        SetProcessorCountForTest(count);
    };
}
void AllProcessors() { SetProcessorCountForTest(0); }

const RegisterFamily kConvolution([] {
    for (const size_t side : {size_t{4096}, size_t{1024}}) {
        const size_t pixels = side * side;
        for (const Member* member : convolution::kConvolutionMembers) {
            const Member& m = *member;
            const size_t bytes = m.format.pixelBytes();
            const std::vector<uint32_t> sizes =
                m.operation == Operation::General ? std::vector<uint32_t>{3, 5} : std::vector<uint32_t>{3, 15};
            for (const uint32_t size : sizes) {
                const auto kernel = std::make_shared<Binomial>(MakeBinomial(size == 15 ? 3 : size));
                kernel->size = size;  // box and tent read only the size
                const std::string operation =
                    std::string(m.name).substr(6) + " " + std::to_string(size) + "x" + std::to_string(size);
                auto images = std::make_shared<Images>(Images{side, bytes, nullptr, nullptr, {}});
                const auto prepare = [images] { images->prepare(); };
                const size_t moved = pixels * bytes * 2;
                for (const Split split : {Split::Single, Split::Default}) {
                    const Quorin_Flags flags = FlagsOf(split);
                    RegisterRow({operation, side, side, split, moved},
                                [images, &m, kernel, flags] {
                                    Run(m, *kernel, images->src->buffer, images->dest->buffer, flags,
                                        images->scratch.data());
                                },
                                split == Split::Single ? PeerOf(m, size) : "",
                                WithProcessors(split == Split::Single ? 1 : 0, prepare), AllProcessors);
                }
                RegisterScalarRow({operation, side, side, Split::Single, moved},
                                  [images, &m, kernel] {
                                      Run(m, *kernel, images->src->buffer, images->dest->buffer,
                                          kQuorinFlag_SingleThreaded, images->scratch.data());
                                  },
                                  WithProcessors(1, prepare));
                if (side == 4096) {
                    RegisterPairRow({operation, side, side, Split::Pair, moved},
                                    [images, &m, kernel](size_t first, size_t rows) {
                                        // Each half its own part of the scratch.
                                        Run(m, *kernel, RowsOf(images->src->buffer, first, rows),
                                            RowsOf(images->dest->buffer, first, rows), kQuorinFlag_SingleThreaded,
                                            images->scratch.data() + first * images->side * images->bytes);
                                    },
                                    WithProcessors(1, prepare));
                }
            }
        }
        // Peers, single-threaded, on images of the same size.
        for (const size_t bytes : {size_t{1}, size_t{4}}) {
            auto peer = std::make_shared<Images>(Images{side, bytes, nullptr, nullptr, {}});
            const auto preparePeer = [peer] { peer->prepare(); };
            const int s = static_cast<int>(side), stride = s * static_cast<int>(bytes);
            const size_t moved = pixels * bytes * 2;
            (void)s, (void)stride, (void)preparePeer, (void)moved;
#ifdef QUORIN_BENCH_OPENCV_IMGPROC
            const int type = bytes == 1 ? CV_8UC1 : CV_8UC4;
            const std::string channels = bytes == 1 ? "8UC1" : "8UC4";
            for (const uint32_t size : {3u, 5u}) {
                const Binomial b = MakeBinomial(size);
                cv::Mat k(static_cast<int>(size), static_cast<int>(size), CV_32F);
                for (uint32_t i = 0; i < size * size; ++i)
                    k.at<float>(static_cast<int>(i)) = static_cast<float>(b.weights[i]) / static_cast<float>(b.divisor);
                RegisterRow({"OpenCV filter2D " + channels + " " + std::to_string(size) + "x" + std::to_string(size),
                             side, side, Split::Single, moved},
                            [peer, s, type, k] {
                                const cv::Mat src(s, s, type, peer->src->buffer.data);
                                cv::Mat dest(s, s, type, peer->dest->buffer.data);
                                cv::filter2D(src, dest, -1, k);
                            },
                            {}, [preparePeer] { preparePeer(); cv::setNumThreads(1); }, [] { cv::setNumThreads(-1); });
            }
            for (const int size : {3, 15}) {
                const std::string k = std::to_string(size) + "x" + std::to_string(size);
                RegisterRow({"OpenCV blur " + channels + " " + k, side, side, Split::Single, moved},
                            [peer, s, type, size] {
                                const cv::Mat src(s, s, type, peer->src->buffer.data);
                                cv::Mat dest(s, s, type, peer->dest->buffer.data);
                                cv::blur(src, dest, cv::Size(size, size));
                            },
                            {}, [preparePeer] { preparePeer(); cv::setNumThreads(1); }, [] { cv::setNumThreads(-1); });
                cv::Mat tent(1, size, CV_32F);
                const float h = static_cast<float>(size / 2 + 1);
                for (int i = 0; i < size; ++i) tent.at<float>(i) = static_cast<float>(std::min(i, size - 1 - i) + 1) / (h * h);
                RegisterRow({"OpenCV sepFilter2D " + channels + " " + k, side, side, Split::Single, moved},
                            [peer, s, type, tent] {
                                const cv::Mat src(s, s, type, peer->src->buffer.data);
                                cv::Mat dest(s, s, type, peer->dest->buffer.data);
                                cv::sepFilter2D(src, dest, -1, tent, tent);
                            },
                            {}, [preparePeer] { preparePeer(); cv::setNumThreads(1); }, [] { cv::setNumThreads(-1); });
            }
#endif
#ifdef QUORIN_BENCH_VIPS
            // Integer-precision convolution with the same binomial kernels.
            for (const uint32_t size : {3u, 5u}) {
                const Binomial b = MakeBinomial(size);
                const auto mask = std::shared_ptr<VipsImage>(
                    vips_image_new_matrix(static_cast<int>(size), static_cast<int>(size)), g_object_unref);
                for (uint32_t i = 0; i < size * size; ++i)
                    *VIPS_MATRIX(mask.get(), i % size, i / size) = static_cast<double>(b.weights[i]);
                vips_image_set_double(mask.get(), "scale", static_cast<double>(b.divisor));
                const std::string k = std::to_string(size) + "x" + std::to_string(size);
                RegisterRow({"libvips conv " + std::string(bytes == 1 ? "8UC1 " : "8UC4 ") + k, side, side,
                             Split::Single, moved},
                            [peer, side, bytes, mask] {
                                RunVips(peer->src->buffer.data, side, side, static_cast<int>(bytes), VIPS_FORMAT_UCHAR,
                                        [&mask](VipsImage* in, VipsImage** out) {
                                            return vips_conv(in, out, mask.get(), "precision",
                                                             VIPS_PRECISION_INTEGER, nullptr);
                                        });
                            },
                            {}, [preparePeer] { StartVips(), preparePeer(); });
            }
#endif
#ifdef QUORIN_BENCH_LIBYUV
            if (bytes == 4) {
                for (const int size : {3, 15}) {
                    const std::string k = std::to_string(size) + "x" + std::to_string(size);
                    RegisterRow({"libyuv ARGBBlur " + k, side, side, Split::Single, moved},
                                [peer, s, stride, size] {
                                    libyuv::ARGBBlur(static_cast<const uint8_t*>(peer->src->buffer.data), stride,
                                                     static_cast<uint8_t*>(peer->dest->buffer.data), stride,
                                                     reinterpret_cast<int32_t*>(peer->scratch.data()), s * 4, s, s,
                                                     size / 2);
                                },
                                "OpenCV blur 8UC4 " + k, [peer, preparePeer, side] {
                                    preparePeer();
                                    // width x (height + 1) x 16 bytes, 16-byte aligned (vector storage is).
                                    peer->scratch.resize(side * (side + 1) * 16);
                                });
                }
            }
#endif
        }
    }
});

}  // namespace
}  // namespace quorin::bench
