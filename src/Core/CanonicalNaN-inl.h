// The vector twin of CanonicalNaN (CanonicalNaN.h), compiled once per
// instruction set (include after foreach_target.h and highway.h).
#if defined(QUORIN_CORE_CANONICAL_NAN_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORIN_CORE_CANONICAL_NAN_INL_H_
#undef QUORIN_CORE_CANONICAL_NAN_INL_H_
#else
#define QUORIN_CORE_CANONICAL_NAN_INL_H_
#endif

#include <hwy/highway.h>

#include "Core/CanonicalNaN.h"

HWY_BEFORE_NAMESPACE();
namespace quorin::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Every NaN lane of a float vector becomes the canonical quiet NaN.
template <class V>
HWY_INLINE V CanonicalNaNs(V v) {
    const hn::DFromV<V> d;
    const V canonical = hn::BitCast(d, hn::Set(hn::RebindToUnsigned<decltype(d)>(), kCanonicalNaNBits));
    return hn::IfThenElse(hn::IsNaN(v), canonical, v);
}

}  // namespace quorin::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
