#include "Demo.h"

#include <png.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace quorin::demo {

Image::Image(size_t width, size_t height, size_t pixelBytes)
    : bytes(width * height * pixelBytes), buffer{nullptr, height, width, width * pixelBytes} {
    buffer.data = bytes.data();
}

std::vector<Step>& Steps() {
    static std::vector<Step> steps;
    return steps;
}

StepRegistration::StepRegistration(std::string name, int order, std::function<void(Context&)> run) {
    Steps().push_back({std::move(name), order, std::move(run)});
}

Quorin_Error Context::timed(const std::string& name, size_t pixels, const std::function<Quorin_Error()>& op, int repeat) {
    Quorin_Error result = kQuorinSuccess;
    double best = 1e30;
    for (int i = 0; i < repeat; ++i) {
        const auto start = std::chrono::steady_clock::now();
        result = op();
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        best = std::min(best, seconds.count());
    }
    if (result < 0) fail(name + " returned " + std::to_string(result));
    std::printf("%-40s %10.1f megapixels/s\n", name.c_str(), static_cast<double>(pixels) / best / 1e6);
    return result;
}

void Context::fail(const std::string& what) {
    std::printf("FAILED: %s\n", what.c_str());
    ok = false;
}

void Context::writePng(const std::string& fileName, const Quorin_Buffer& image, int channels) {
    const std::string path = outputDir + "/" + fileName;
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return fail("cannot write " + path);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        std::fclose(file);
        return fail("libpng failed on " + path);
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height), 8,
                 channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    if (channels == 4) png_set_swap_alpha(png);  // our pixels are A, R, G, B
    for (size_t y = 0; y < image.height; ++y)
        png_write_row(png, static_cast<png_bytep>(image.data) + y * image.rowBytes);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
    std::printf("  wrote %s\n", path.c_str());
}

Image DrawSample(size_t width, size_t height) {
    // Colour rings over a diagonal gradient; alpha ramps from 0 at the left
    // edge to 255 at the right, so alpha-aware operations have work to do.
    Image image(width, height, 4);
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            uint8_t* p = image.bytes.data() + (y * width + x) * 4;
            const double dx = static_cast<double>(x) - width / 2.0, dy = static_cast<double>(y) - height / 2.0;
            const double ring = 0.5 + 0.5 * std::sin(std::sqrt(dx * dx + dy * dy) / 9.0);
            p[0] = static_cast<uint8_t>(255 * x / std::max<size_t>(width - 1, 1));
            p[1] = static_cast<uint8_t>(255 * ring);
            p[2] = static_cast<uint8_t>(255 * (x + y) / (width + height));
            p[3] = static_cast<uint8_t>(255 * (1.0 - ring));
        }
    }
    return image;
}

Image DrawBackground(size_t width, size_t height) {
    // A checkerboard with a vertical alpha ramp.
    Image image(width, height, 4);
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            uint8_t* p = image.bytes.data() + (y * width + x) * 4;
            const bool dark = ((x / 32) + (y / 32)) % 2 != 0;
            p[0] = static_cast<uint8_t>(64 + 191 * y / std::max<size_t>(height - 1, 1));
            p[1] = dark ? 40 : 220;
            p[2] = dark ? 60 : 200;
            p[3] = dark ? 90 : 160;
        }
    }
    return image;
}

}  // namespace quorin::demo

int main(int argc, char** argv) {
    using namespace quorin::demo;
    Context context;
    context.outputDir = argc > 1 ? argv[1] : "out";
    ::mkdir(context.outputDir.c_str(), 0755);
    context.sample = DrawSample(1024, 768);
    context.background = DrawBackground(1024, 768);

    std::printf("Quorin demo: vector kernels %s, sample %zux%zu ARGB8888\n",
                Quorin_HasFeature(1) ? "available" : "off", context.sample.buffer.width, context.sample.buffer.height);

    Image buffer;
    Quorin_Buffer fresh;
    const Quorin_Error init = QuorinBuffer_Init(&fresh, 768, 1024, 32, 0);
    if (init != kQuorinSuccess) context.fail("QuorinBuffer_Init");
    std::printf("QuorinBuffer_Init 1024x768x32: rowBytes %zu\n", fresh.rowBytes);
    free(fresh.data);
    context.writePng("sample.png", context.sample.buffer, 4);

    auto& steps = Steps();
    std::stable_sort(steps.begin(), steps.end(), [](const Step& a, const Step& b) { return a.order < b.order; });
    for (const Step& step : steps) {
        std::printf("-- %s\n", step.name.c_str());
        step.run(context);
    }
    std::printf(context.ok ? "demo finished\n" : "demo found failures\n");
    return context.ok ? 0 : 1;
}
