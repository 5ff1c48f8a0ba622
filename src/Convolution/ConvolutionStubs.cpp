// Not-yet-implemented entry points of Convolution/ConvolutionStubs; the rows live in ConvolutionStubs.def.
namespace {
constexpr const char kModulePath[] = "Convolution/ConvolutionStubs";
}  // namespace

#include "Core/Unimplemented.h"
#include "Convolution/ConvolutionStubs.def"
