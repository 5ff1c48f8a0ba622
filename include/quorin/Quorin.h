/* Quorin: the whole public interface in one include. Plain C99; safe to
 * include from C++. */
#ifndef QUORIN_QUORIN_H
#define QUORIN_QUORIN_H

#include <quorin/Version.h> /* written by the build */
#include "Types.h"
#include "ErrorNames.h"
#include "Utilities.h"
#include "Alpha.h"
#include "Conversion.h"
#include "Geometry.h"
#include "Convolution.h"
#include "Histogram.h"
#include "Transform.h"
#include "Morphology.h"

#endif /* QUORIN_QUORIN_H */
