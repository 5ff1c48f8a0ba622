#include "Demo.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

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
    if (result < 0) fail(name, result);
    std::printf("%-40s %10.1f megapixels/s\n", name.c_str(), static_cast<double>(pixels) / best / 1e6);
    return result;
}

void Context::fail(const std::string& what) {
    std::printf("FAILED: %s\n", what.c_str());
    ok = false;
}

void Context::fail(const std::string& call, Quorin_Error result) {
    fail(call + " returned " + std::to_string(result) + " " + Quorin_ErrorName(result) + ": " +
         Quorin_ErrorMessage(result));
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
                 channels == 4   ? PNG_COLOR_TYPE_RGB_ALPHA
                 : channels == 3 ? PNG_COLOR_TYPE_RGB
                                 : PNG_COLOR_TYPE_GRAY,
                 PNG_INTERLACE_NONE,
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

namespace {

constexpr const char* kUsage =
    "usage: quorin-demo [--help] [OUTPUT-FOLDER]\n"
    "\n"
    "Runs each implemented family of Quorin on a built-in 1024x768 ARGB8888 sample\n"
    "image (colour rings, alpha rising from 0 at the left edge to 255 at the right),\n"
    "checks every result against what the operation promises, and writes the\n"
    "images as PNG files into OUTPUT-FOLDER (default: out), which it creates.\n"
    "\n"
    "Each timed line gives an operation's speed on this machine: the best of 5\n"
    "calls, in megapixels per second, with the default threading. Lines that\n"
    "start with two spaces say what a check expected and what it found.\n"
    "\n"
    "Exit status: 0 when every check passed, 1 when one failed, 2 on a usage error.\n";

// The output folder from the command line, or nothing after printing why not.
std::optional<std::string> OutputFolder(int argc, char** argv) {
    std::optional<std::string> folder;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::fputs(kUsage, stdout);
            std::exit(0);
        }
        if (arg.size() > 1 && arg[0] == '-') {
            std::fprintf(stderr, "quorin-demo: unknown option %s\n\n%s", arg.c_str(), kUsage);
            return std::nullopt;
        }
        if (folder) {
            std::fprintf(stderr, "quorin-demo: one output folder only (got %s and %s)\n\n%s", folder->c_str(),
                         arg.c_str(), kUsage);
            return std::nullopt;
        }
        folder = arg;
    }
    return folder.value_or("out");
}

}  // namespace

int main(int argc, char** argv) {
    using namespace quorin::demo;
    const std::optional<std::string> folder = OutputFolder(argc, argv);
    if (!folder) return 2;
    std::error_code error;
    std::filesystem::create_directories(*folder, error);
    if (error) {
        std::fprintf(stderr, "quorin-demo: cannot create %s: %s\n", folder->c_str(), error.message().c_str());
        return 1;
    }
    Context context;
    context.outputDir = *folder;
    context.sample = DrawSample(1024, 768);
    context.background = DrawBackground(1024, 768);

    std::printf("Quorin %s demo: vector kernels %s, sample %zux%zu ARGB8888, PNG files into %s\n",
                QUORIN_VERSION_STRING, Quorin_HasFeature(1) ? "available" : "off (scalar kernels)",
                context.sample.buffer.width, context.sample.buffer.height, folder->c_str());
    std::printf("Timed lines: best of 5 calls, megapixels/s; indented lines: what a check expected and found.\n");

    Quorin_Buffer fresh;
    const Quorin_Error init = QuorinBuffer_Init(&fresh, 768, 1024, 32, 0);
    if (init != kQuorinSuccess) context.fail("QuorinBuffer_Init", init);
    // 1024 pixels of 4 bytes fill whole 64-byte lines, so no padding is expected.
    std::printf("QuorinBuffer_Init 1024x768, 32 bits a pixel: rowBytes %zu (4096 expected: rows of 32 bytes or more "
                "are padded to 64)\n", fresh.rowBytes);
    free(fresh.data);
    context.writePng("sample.png", context.sample.buffer, 4);

    auto& steps = Steps();
    std::stable_sort(steps.begin(), steps.end(), [](const Step& a, const Step& b) { return a.order < b.order; });
    for (const Step& step : steps) {
        std::printf("-- %s\n", step.name.c_str());
        step.run(context);
    }
    std::printf(context.ok ? "demo finished: every check passed\n" : "demo found failures (lines marked FAILED)\n");
    return context.ok ? 0 : 1;
}
