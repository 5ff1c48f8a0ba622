// The steps the blend and clip entry points share after their checks: walking
// a band of rows with a chosen kernel, and the row-range work object that the
// object-based dispatcher cuts into bands.
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

// A band function (firstRow, rows) that runs `kernel` over those rows of
// every plane, as one run when all planes are contiguous, else row by row.
template <class Kernel, class... Planes>
auto OverRows(size_t width, Kernel kernel, const Planes&... planes) {
    return [=](size_t firstRow, size_t rows) { WalkRegion(0, firstRow, width, rows, kernel, planes...); };
}

// The same as a piece routine (x, y, w, h) for the rows dispatcher.
template <class Kernel, class... Planes>
auto OverPieces(Kernel kernel, const Planes&... planes) {
    return [=](size_t x, size_t y, size_t w, size_t h) { WalkRegion(x, y, w, h, kernel, planes...); };
}

// A row-range job whose bands run a band function.
template <class BandFn>
class BandWork final : public QuorinRowWork {
public:
    BandWork(size_t width, size_t height, BandFn band) : width_(width), height_(height), band_(std::move(band)) {}

    size_t pixelCount() const override { return width_ * height_; }
    size_t rowCount() const override { return height_; }
    QuorinRowJob* makeJob(size_t firstRow, size_t rows) const override { return new Job(band_, firstRow, rows); }

private:
    class Job final : public QuorinRowJob {
    public:
        Job(const BandFn& band, size_t firstRow, size_t rows) : band_(band), firstRow_(firstRow), rows_(rows) {}
        void run() override { band_(firstRow_, rows_); }

    private:
        const BandFn& band_;
        size_t firstRow_, rows_;
    };

    size_t width_, height_;
    BandFn band_;
};

}  // namespace quorin::alpha
