// Host graphics image formats: colour-space tests through the bridge, the
// validity rules, component counts and field-by-field comparison.
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "Host/Bridge.h"
#include "platform/Log.h"
#include "quorin/Utilities.h"

namespace {

using quorin::host::OrlBridge;

constexpr const char kModulePath[] = "Utilities/OrlImageFormat";
// The line field of the level-3 record of an unsupported difference mask.
constexpr int kUnsupportedDiffMaskLine = 171;

bool IsOneOf(uint32_t value, std::initializer_list<uint32_t> allowed) {
    for (const uint32_t a : allowed)
        if (value == a) return true;
    return false;
}

constexpr uint32_t kAlphaPlacementMask = 0x1F;
constexpr uint32_t kFloatComponents = 0x100;
uint32_t ByteOrder(uint32_t bitmapInfo) { return (bitmapInfo >> 12) & 7; }

// Rule 5: what a colour space asks of the bridge and, when indexed, of the
// record. The model query is read once so that the rule sees one function.
bool ColorSpaceRuleHolds(const QuorinOrlImageFormat& format, bool asDestination) {
    if (format.colorSpace == nullptr) return true;
    const auto model = OrlBridge().ColorSpaceGetModel;
    const auto base = OrlBridge().ColorSpaceGetBaseColorSpace;
    if (model == nullptr || base == nullptr) return false;
    if (model(format.colorSpace) != kQuorinOrlColorSpaceModel_Indexed) return true;
    const uint32_t bpc = format.bitsPerComponent;
    if (bpc < 1 || bpc > 31 || IsOneOf(bpc, {5, 12, 16})) return false;
    if (format.bitsPerPixel != bpc) return false;
    if ((format.bitmapInfo & kAlphaPlacementMask) != 0) return false;
    if (!asDestination) return true;
    // An indexed destination's entries must be written in a monochrome base;
    // a space without a base cannot be one.
    const QuorinHostOrlColorSpace* baseSpace = base(format.colorSpace);
    return baseSpace != nullptr && model(baseSpace) == kQuorinOrlColorSpaceModel_Monochrome;
}

bool SameDecode(const QuorinOrlImageFormat& a, const QuorinOrlImageFormat& b) {
    if (a.decode == b.decode) return true;
    if (a.decode == nullptr || b.decode == nullptr) return false;
    // A decode array holds a (low, high) pair per component; without a count
    // its length is unknown and only the pointers can be compared.
    const size_t components = QuorinOrlImageFormat_GetComponentCount(&a);
    return components != 0 && std::memcmp(a.decode, b.decode, 2 * components * sizeof(float)) == 0;
}

}  // namespace

extern "C" {

QUORIN_API int _QuorinOrlImageFormat_IsRGBColorSpace(const QuorinOrlImageFormat* format) {
    if (format == nullptr) return 0;
    if (format->colorSpace == nullptr) return 1;
    const auto model = OrlBridge().ColorSpaceGetModel;
    return model != nullptr && model(format->colorSpace) == kQuorinOrlColorSpaceModel_RGB;
}

QUORIN_API int _QuorinOrlImageFormat_IsSameColorSpace(const QuorinOrlImageFormat* a,
                                                      const QuorinOrlImageFormat* b) {
    if (a == nullptr || b == nullptr) return 0;
    if (a->colorSpace == b->colorSpace) return 1;
    if (_QuorinOrlImageFormat_IsRGBColorSpace(a) && _QuorinOrlImageFormat_IsRGBColorSpace(b)) return 1;
    const auto model = OrlBridge().ColorSpaceGetModel;
    if (a->colorSpace == nullptr || b->colorSpace == nullptr || model == nullptr) return 0;
    return model(a->colorSpace) == model(b->colorSpace);
}

QUORIN_API int _QuorinOrlImageFormat_InitFromOrlImage(QuorinOrlImageFormat* format,
                                                      const QuorinHostOrlImage* image) {
    const QuorinOrlBridgeSymbolTable& bridge = OrlBridge();
    const auto bpc = bridge.ImageGetBitsPerComponent;
    const auto bpp = bridge.ImageGetBitsPerPixel;
    const auto space = bridge.ImageGetColorSpace;
    const auto info = bridge.ImageGetBitmapInfo;
    const auto decode = bridge.ImageGetDecode;
    const auto intent = bridge.ImageGetRenderingIntent;
    if (format == nullptr || image == nullptr) return 0;
    if (!bpc || !bpp || !space || !info || !decode || !intent) return 0;
    // The host counts in size_t; a count beyond 32 bits cannot be a valid
    // one and is kept out of range rather than wrapped into it.
    const auto narrow = [](size_t v) { return v > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(v); };
    format->bitsPerComponent = narrow(bpc(image));
    format->bitsPerPixel = narrow(bpp(image));
    format->colorSpace = space(image);
    format->bitmapInfo = info(image);
    format->version = 0;
    format->decode = decode(image);
    format->renderingIntent = intent(image);
    return 1;
}

QUORIN_API int _QuorinOrlImageFormat_Check(const QuorinOrlImageFormat* format, int asDestination) {
    if (format == nullptr || format->version != 0) return 0;
    if (!IsOneOf(format->bitsPerComponent, {1, 2, 4, 5, 8, 12, 16, 32})) return 0;
    const uint32_t info = format->bitmapInfo;
    if ((info & 24) != 0 || ByteOrder(info) > 4) return 0;
    if ((info & kFloatComponents) != 0 && !IsOneOf(format->bitsPerComponent, {16, 32})) return 0;
    if (format->renderingIntent > 4) return 0;
    if (!ColorSpaceRuleHolds(*format, asDestination != 0)) return 0;
    return IsOneOf(format->bitsPerPixel, {1, 2, 4, 8, 16, 32}) ? 1 : 0;
}

QUORIN_API size_t QuorinOrlImageFormat_GetComponentCount(const QuorinOrlImageFormat* format) {
    const auto count = OrlBridge().ColorSpaceGetNumberOfComponents;
    if (format == nullptr || count == nullptr || format->version != 0) return 0;
    if (format->colorSpace == nullptr) return 3;
    return count(format->colorSpace);
}

QUORIN_API uint32_t _QuorinOrlImageFormat_GetDifferences(const QuorinOrlImageFormat* a,
                                                         const QuorinOrlImageFormat* b, uint32_t compareMask) {
    if (const uint32_t unsupported = compareMask & ~uint32_t{kQuorinOrlFormatDifference_All}) {
        char message[48];
        std::snprintf(message, sizeof message, "Unsupported diff mask: %d", static_cast<int>(unsupported));
        quorin::WriteLogRecord(3, __func__, kModulePath, kUnsupportedDiffMaskLine, message);
        compareMask &= kQuorinOrlFormatDifference_All;
    }
    if (a == nullptr && b == nullptr) return 0;
    if (a == nullptr || b == nullptr) return compareMask;
    uint32_t differences = 0;
    const auto note = [&](uint32_t field, bool differs) {
        if (differs) differences |= field;
    };
    note(kQuorinOrlFormatDifference_BitsPerComponent, a->bitsPerComponent != b->bitsPerComponent);
    note(kQuorinOrlFormatDifference_BitsPerPixel, a->bitsPerPixel != b->bitsPerPixel);
    // The host queries behind these two run only when asked for.
    if (compareMask & kQuorinOrlFormatDifference_ColorSpace)
        note(kQuorinOrlFormatDifference_ColorSpace, !_QuorinOrlImageFormat_IsSameColorSpace(a, b));
    note(kQuorinOrlFormatDifference_BitmapInfo, a->bitmapInfo != b->bitmapInfo);
    note(kQuorinOrlFormatDifference_Version, a->version != b->version);
    if (compareMask & kQuorinOrlFormatDifference_Decode)
        note(kQuorinOrlFormatDifference_Decode, !SameDecode(*a, *b));
    note(kQuorinOrlFormatDifference_RenderingIntent, a->renderingIntent != b->renderingIntent);
    return differences & compareMask;
}

QUORIN_API int QuorinOrlImageFormat_IsEqual(const QuorinOrlImageFormat* a, const QuorinOrlImageFormat* b) {
    return _QuorinOrlImageFormat_GetDifferences(a, b, kQuorinOrlFormatDifference_All) == 0;
}

}  // extern "C"
