// The alpha family's own reading of a null buffer; walking and splitting come
// from the core (OverRows, OverPieces, BandWork).
#pragma once

#include <cstddef>
#include <utility>

#include "Core/Checks.h"
#include "Core/Dispatch.h"
#include "Core/Walk.h"

namespace quorin::alpha {

// A record that is missing or has no pixels: both are a null buffer to the
// alpha family.
template <class... Records>
bool AnyMissing(const Records*... records) {
    return AnyNull(records...) || AnyNullData(records...);
}

}  // namespace quorin::alpha
