// Scales the sample down to a third and up to twice its size in both
// arithmetics, and turns it a quarter into a larger destination with a
// background colour around it.
#include <cstdio>
#include <vector>

#include "Demo.h"

namespace quorin::demo {
namespace {

void ScaleAndTurn(Context& context) {
    const Quorin_Buffer& sample = context.sample.buffer;
    const size_t w = sample.width, h = sample.height;
    struct Target {
        const char* file;
        size_t width, height;
        Quorin_Flags flags;
    };
    const Target targets[] = {{"scale-down.png", w / 3, h / 3, 0},
                              {"scale-down-hq.png", w / 3, h / 3, kQuorinFlag_HighQualityResampling},
                              {"scale-up.png", w * 2, h * 2, 0},
                              {"scale-up-hq.png", w * 2, h * 2, kQuorinFlag_HighQualityResampling}};
    for (const Target& t : targets) {
        Image out(t.width, t.height, 4);
        const Quorin_Error scratch =
            QuorinScale_ARGB8888(&sample, &out.buffer, nullptr, t.flags | kQuorinFlag_QueryTempSize);
        if (scratch < 0) return context.fail("QuorinScale_ARGB8888 size query", scratch);
        std::vector<uint8_t> temp(static_cast<size_t>(scratch));
        const Quorin_Error result = context.timed(
            std::string("QuorinScale_ARGB8888 to ") + t.file, t.width * t.height,
            [&] { return QuorinScale_ARGB8888(&sample, &out.buffer, temp.data(), t.flags); });
        if (result != kQuorinSuccess) return context.fail("QuorinScale_ARGB8888", result);
        std::printf("  %zux%zu -> %zux%zu with %d bytes of scratch\n", w, h, t.width, t.height, scratch);
        context.writePng(t.file, out.buffer, 4);
    }

    Image turned(h + 64, w + 32, 4);
    const uint8_t slate[4] = {255, 40, 48, 64};
    const Quorin_Error result = context.timed("QuorinRotate90_ARGB8888", w * h, [&] {
        return QuorinRotate90_ARGB8888(&sample, &turned.buffer, 1, slate, 0);
    });
    if (result != kQuorinSuccess) return context.fail("QuorinRotate90_ARGB8888", result);
    // The turned sample's top-left pixel is the source's top-right one; the
    // border is the background.
    const uint8_t* corner = turned.bytes.data();
    const uint8_t* inside = turned.bytes.data() + 16 * turned.buffer.rowBytes + 32 * 4;
    const uint8_t* topRight = context.sample.bytes.data() + (w - 1) * 4;
    size_t wrong = 0;
    for (size_t k = 0; k < 4; ++k) wrong += (corner[k] != slate[k]) + (inside[k] != topRight[k]);
    std::printf("  turned a quarter into %zux%zu; %zu bytes differ from the rule\n", h + 64, w + 32, wrong);
    if (wrong != 0) context.fail("the quarter turn differs from its mapping");
    context.writePng("rotate-90.png", turned.buffer, 4);
}

const StepRegistration kGeometryStep{"scale and quarter turn", 50, ScaleAndTurn};

}  // namespace
}  // namespace quorin::demo
