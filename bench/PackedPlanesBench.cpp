// The packed-plane conversions beside the streaming-copy ceiling for the
// bytes they move: a side x side 8-bit plane and its packed rows (side / 8,
// / 4 or / 2 bytes), on the calling thread, with the scalar rows beside.
// Rows come from the member table.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "BenchSupport.h"
#include "Conversion/PackedPlanesMembers.h"

namespace quorin::bench {
namespace {

using planes::Direction;
using planes::PlaneMember;

struct Images {
    size_t side;
    const PlaneMember* member;
    std::unique_ptr<OwnedImage> src, dest;
    void prepare() {
        if (src) return;
        const size_t packed = side / member->pixelsPerByte();
        const bool unpack = member->direction == Direction::Unpack;
        src = std::make_unique<OwnedImage>(unpack ? packed : side, side, 1, 1);
        dest = std::make_unique<OwnedImage>(unpack ? side : packed, side, 1, 2);
        src->buffer.width = dest->buffer.width = side;
    }
    void run() const {
        if (const Quorin_Error error = member->invoke(&src->buffer, &dest->buffer)) {
            std::fprintf(stderr, "%s refused the benchmark's images: %d\n", member->name, error);
            std::abort();
        }
    }
};

const RegisterFamily kPackedPlanes([] {
    for (const size_t size : {size_t{4096}, size_t{1024}})
        for (const PlaneMember* m : planes::kPlaneMembers) {
            const std::string operation = std::string(m->name).substr(6);
            auto images = std::make_shared<Images>(Images{size, m, nullptr, nullptr});
            const size_t moved = size * size + size * size / m->pixelsPerByte();
            const auto prepare = [images] { images->prepare(); };
            RegisterRow({operation, size, size, Split::Single, moved}, [images] { images->run(); }, "", prepare);
            RegisterScalarRow({operation, size, size, Split::Single, moved}, [images] { images->run(); }, prepare);
        }
});

}  // namespace
}  // namespace quorin::bench
