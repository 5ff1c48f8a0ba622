// The demo's frame: a built-in sample image, PNG output, and a list of steps
// that each run one operation and report its speed. A family adds its
// operations by registering a step in its own file:
//
//   static const quorin::demo::StepRegistration kStep{"premultiply", 20, [](quorin::demo::Context& c) { ... }};
#pragma once

#include <quorin/Quorin.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorin::demo {

// An owned interleaved or planar image with a tight or padded row.
struct Image {
    std::vector<uint8_t> bytes;
    Quorin_Buffer buffer{};
    Image() = default;
    Image(size_t width, size_t height, size_t pixelBytes);
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    Image(Image&&) = default;
    Image& operator=(Image&&) = default;
};

struct Context {
    std::string outputDir;
    Image sample;       // ARGB8888 with an alpha ramp, drawn procedurally
    Image background;   // a second ARGB8888 image for compositing
    bool ok = true;     // a step sets it to false when a check fails

    // Runs `op` `repeat` times, prints "name: N megapixels/s" and returns the last result.
    Quorin_Error timed(const std::string& name, size_t pixels, const std::function<Quorin_Error()>& op, int repeat = 5);
    // Writes an 8-bit image of 1 (gray) or 4 (ARGB order) channels as PNG into outputDir.
    void writePng(const std::string& fileName, const Quorin_Buffer& image, int channels);
    void fail(const std::string& what);
    // A call that returned a failure code: says which, by name.
    void fail(const std::string& call, Quorin_Error result);
};

struct Step {
    std::string name;
    int order;  // steps run in increasing order
    std::function<void(Context&)> run;
};

std::vector<Step>& Steps();

struct StepRegistration {
    StepRegistration(std::string name, int order, std::function<void(Context&)> run);
};

// The sample images.
Image DrawSample(size_t width, size_t height);
Image DrawBackground(size_t width, size_t height);

}  // namespace quorin::demo
