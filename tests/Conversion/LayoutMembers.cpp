#include "LayoutMembers.h"

#include <cmath>
#include <cstring>

namespace quorin::test {

float ExpectedByteToFloat(uint8_t v, float max, float min) {
    const float product = static_cast<float>(v) * (max - min);  // single precision
    const double scaled = static_cast<double>(product) / 255.0;  // double from here on
    return static_cast<float>(min + scaled);                       // one rounding
}

uint8_t ExpectedFloatToByte(float f, float max, float min) {
    const float t = ((f - min) * 255.0f) / (max - min) + 0.5f;
    if (std::isnan(t) || t < 0.0f) return 0;
    if (t >= 255.0f) return 255;
    return static_cast<uint8_t>(std::trunc(t));
}

void Member::convert(int c, const uint8_t* from, uint8_t* to) const {
    switch (depth) {
        case Depth::Same: std::memcpy(to, from, planeBytes); return;
        case Depth::ByteToFloat: {
            const float f = ExpectedByteToFloat(*from, kMax[c], kMin[c]);
            std::memcpy(to, &f, sizeof f);
            return;
        }
        case Depth::FloatToByte: {
            float f;
            std::memcpy(&f, from, sizeof f);
            *to = ExpectedFloatToByte(f, kMax[c], kMin[c]);
            return;
        }
    }
}

std::vector<uint8_t> Member::constantChannel(bool alphaPlaneMissing) const {
    const size_t sample = interleavedSample();
    std::vector<uint8_t> bytes(sample);
    // The XRGB float-to-8-bit form converts its float constant through
    // channel 0's range; the ARGB front ends with a null alpha plane pass 0.
    if (depth == Depth::FloatToByte && (alphaPlaneMissing || planeChannel.front() == 1)) {
        bytes[0] = ExpectedFloatToByte(alphaPlaneMissing ? 0.0f : kAlphaFloat, kMax[0], kMin[0]);
    } else if (!alphaPlaneMissing && sample == 1) {
        bytes[0] = kAlphaByte;
    } else if (!alphaPlaneMissing) {
        std::memcpy(bytes.data(), &kAlphaFloat, sizeof kAlphaFloat);
    }
    return bytes;
}

namespace {
using B = const Quorin_Buffer*;
using F = Quorin_Flags;
using R = const float*;
}  // namespace

const std::vector<Member>& LayoutMembers() {
    static const std::vector<Member> members{
        // ---- planes into pixels, same depth
        {"Planar8toARGB8888", true, Depth::Same, 4, 1, 4, {0, 1, 2, 3}, true, true,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_Planar8toARGB8888(p[0], p[1], p[2], p[3], i, f); }},
        {"Planar8ToXRGB8888", true, Depth::Same, 4, 1, 4, {1, 2, 3}, false, true,
         [](B i, const Planes& p, R, R, F f) {
             return QuorinConvert_Planar8ToXRGB8888(kAlphaByte, p[0], p[1], p[2], i, f);
         }},
        {"Planar8ToBGRX8888", true, Depth::Same, 4, 1, 4, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R, R, F f) {
             return QuorinConvert_Planar8ToBGRX8888(p[0], p[1], p[2], kAlphaByte, i, f);
         }},
        {"PlanarFtoARGBFFFF", true, Depth::Same, 4, 4, 16, {0, 1, 2, 3}, true, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_PlanarFtoARGBFFFF(p[0], p[1], p[2], p[3], i, f); }},
        {"PlanarFToXRGBFFFF", true, Depth::Same, 4, 4, 16, {1, 2, 3}, false, false,
         [](B i, const Planes& p, R, R, F f) {
             return QuorinConvert_PlanarFToXRGBFFFF(kAlphaFloat, p[0], p[1], p[2], i, f);
         }},
        {"PlanarFToBGRXFFFF", true, Depth::Same, 4, 4, 16, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R, R, F f) {
             return QuorinConvert_PlanarFToBGRXFFFF(p[0], p[1], p[2], kAlphaFloat, i, f);
         }},
        {"Planar16UtoARGB16U", true, Depth::Same, 4, 2, 8, {0, 1, 2, 3}, false, false,
         [](B i, const Planes& p, R, R, F f) {
             return QuorinConvert_Planar16UtoARGB16U(p[0], p[1], p[2], p[3], i, f);
         }},
        {"Planar16UtoRGB16U", true, Depth::Same, 3, 2, 6, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_Planar16UtoRGB16U(p[0], p[1], p[2], i, f); }},
        {"Planar8toRGB888", true, Depth::Same, 3, 1, 3, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_Planar8toRGB888(p[0], p[1], p[2], i, f); }},
        {"PlanarFtoRGBFFF", true, Depth::Same, 3, 4, 12, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_PlanarFtoRGBFFF(p[0], p[1], p[2], i, f); }},
        // ---- planes into pixels, with a depth change
        {"Planar8ToARGBFFFF", true, Depth::ByteToFloat, 4, 1, 16, {0, 1, 2, 3}, false, false,
         [](B i, const Planes& p, R max, R min, F f) {
             return QuorinConvert_Planar8ToARGBFFFF(p[0], p[1], p[2], p[3], i, max, min, f);
         }},
        {"Planar8ToXRGBFFFF", true, Depth::ByteToFloat, 4, 1, 16, {1, 2, 3}, false, false,
         [](B i, const Planes& p, R max, R min, F f) {
             return QuorinConvert_Planar8ToXRGBFFFF(kAlphaFloat, p[0], p[1], p[2], i, max, min, f);
         }},
        {"Planar8ToBGRXFFFF", true, Depth::ByteToFloat, 4, 1, 16, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R max, R min, F f) {
             return QuorinConvert_Planar8ToBGRXFFFF(p[0], p[1], p[2], kAlphaFloat, i, max, min, f);
         }},
        {"PlanarFToARGB8888", true, Depth::FloatToByte, 4, 4, 4, {0, 1, 2, 3}, true, false,
         [](B i, const Planes& p, R max, R min, F f) {
             return QuorinConvert_PlanarFToARGB8888(p[0], p[1], p[2], p[3], i, max, min, f);
         }},
        {"PlanarFToXRGB8888", true, Depth::FloatToByte, 4, 4, 4, {1, 2, 3}, false, false,
         [](B i, const Planes& p, R max, R min, F f) {
             return QuorinConvert_PlanarFToXRGB8888(kAlphaFloat, p[0], p[1], p[2], i, max, min, f);
         }},
        {"PlanarFToBGRX8888", true, Depth::FloatToByte, 4, 4, 4, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R max, R min, F f) {
             return QuorinConvert_PlanarFToBGRX8888(p[0], p[1], p[2], kAlphaByte, i, max, min, f);
         }},
        // ---- pixels into planes
        {"ARGB8888toPlanar8", false, Depth::Same, 4, 1, 4, {0, 1, 2, 3}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_ARGB8888toPlanar8(i, p[0], p[1], p[2], p[3], f); }},
        {"ARGBFFFFtoPlanarF", false, Depth::Same, 4, 4, 16, {0, 1, 2, 3}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_ARGBFFFFtoPlanarF(i, p[0], p[1], p[2], p[3], f); }},
        {"ARGB16UtoPlanar16U", false, Depth::Same, 4, 2, 8, {0, 1, 2, 3}, false, false,
         [](B i, const Planes& p, R, R, F f) {
             return QuorinConvert_ARGB16UtoPlanar16U(i, p[0], p[1], p[2], p[3], f);
         }},
        {"RGB16UtoPlanar16U", false, Depth::Same, 3, 2, 6, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_RGB16UtoPlanar16U(i, p[0], p[1], p[2], f); }},
        {"XRGB8888ToPlanar8", false, Depth::Same, 4, 1, 4, {1, 2, 3}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_XRGB8888ToPlanar8(i, p[0], p[1], p[2], f); }},
        {"BGRX8888ToPlanar8", false, Depth::Same, 4, 1, 4, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_BGRX8888ToPlanar8(i, p[0], p[1], p[2], f); }},
        {"XRGBFFFFToPlanarF", false, Depth::Same, 4, 4, 16, {1, 2, 3}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_XRGBFFFFToPlanarF(i, p[0], p[1], p[2], f); }},
        {"BGRXFFFFToPlanarF", false, Depth::Same, 4, 4, 16, {0, 1, 2}, false, false,
         [](B i, const Planes& p, R, R, F f) { return QuorinConvert_BGRXFFFFToPlanarF(i, p[0], p[1], p[2], f); }},
        {"ARGB8888toPlanarF", false, Depth::ByteToFloat, 4, 4, 4, {0, 1, 2, 3}, false, false,
         [](B i, const Planes& p, R max, R min, F f) {
             return QuorinConvert_ARGB8888toPlanarF(i, p[0], p[1], p[2], p[3], max, min, f);
         }},
        {"ARGBFFFFtoPlanar8", false, Depth::FloatToByte, 4, 1, 16, {0, 1, 2, 3}, false, false,
         [](B i, const Planes& p, R max, R min, F f) {
             return QuorinConvert_ARGBFFFFtoPlanar8(i, p[0], p[1], p[2], p[3], max, min, f);
         }},
    };
    return members;
}

}  // namespace quorin::test
