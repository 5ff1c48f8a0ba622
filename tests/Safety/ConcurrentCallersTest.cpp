// Callers on several threads at once, each in default mode (so each call also
// splits its own rows over the processors): every call gives the bytes of the
// same call made alone, single-threaded.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Members.h"
#include "support/GuardedImage.h"

namespace quorin::test {
namespace {

constexpr size_t kThreads = 8;
constexpr size_t kWidth = 257, kHeight = 251;  // 64,507 pixels: above the splitting threshold

// One member's read-only sources and the bytes its single-threaded call writes.
struct Prepared {
    const SafetyMember* member;
    std::vector<std::unique_ptr<GuardedImage>> sources;  // null where the member writes
    std::vector<uint8_t> expected;

    // Runs the member with fresh destinations and returns what it wrote.
    std::vector<uint8_t> run(Quorin_Flags flags, Quorin_Error* result) const {
        std::vector<std::unique_ptr<GuardedImage>> outputs;
        std::vector<const Quorin_Buffer*> records;
        for (size_t i = 0; i < sources.size(); ++i) {
            if (sources[i]) {
                records.push_back(sources[i]->record());
                continue;
            }
            // Padding is poisoned: a destination written up to its rowBytes has none.
            const size_t padding = member->args[i].unpadded() || member->packedRows ? 0 : 4;
            outputs.push_back(std::make_unique<GuardedImage>(kWidth, kHeight, member->args[i].pixelBytes, padding));
            outputs.back()->fillBytes(0x5A);
            records.push_back(outputs.back()->record());
        }
        *result = member->run(records.data(), flags);
        std::vector<uint8_t> written;
        for (const auto& out : outputs) {
            const auto bytes = out->pixels();
            written.insert(written.end(), bytes.begin(), bytes.end());
            if (!out->damagedGuard().empty()) written.push_back(0xEE);  // never matches the expected bytes
        }
        return written;
    }
};

Prepared Prepare(const SafetyMember& m, uint64_t seed) {
    Prepared p{&m, {}, {}};
    for (size_t i = 0; i < m.args.size(); ++i) {
        if (m.args[i].written()) {
            p.sources.push_back(nullptr);
            continue;
        }
        const size_t padding = m.args[i].unpadded() || m.packedRows ? 0 : 8;
        p.sources.push_back(std::make_unique<GuardedImage>(kWidth, kHeight, m.args[i].pixelBytes, padding));
        p.sources.back()->fillRandom(seed + i);
    }
    Quorin_Error result;
    p.expected = p.run(kQuorinFlag_SingleThreaded, &result);
    EXPECT_EQ(result, kQuorinSuccess) << m.name;
    return p;
}

// Eight members at a time; thread t runs member (t + k) mod 8 in its k-th
// turn, so eight different members are under way at any moment and every
// member is called from every thread.
TEST(ConcurrentCallers, EightThreadsGiveTheBytesOfSerialCalls) {
    const auto& members = ImplementedMembers();
    for (size_t first = 0; first < members.size(); first += kThreads) {
        std::vector<Prepared> group;
        for (size_t k = 0; k < kThreads && first + k < members.size(); ++k)
            group.push_back(Prepare(members[first + k], 0xC0 + first + k));
        std::vector<std::string> failures(kThreads);
        std::vector<std::thread> threads;
        for (size_t t = 0; t < kThreads; ++t)
            threads.emplace_back([&, t] {
                for (size_t k = 0; k < 2 * group.size(); ++k) {
                    const Prepared& p = group[(t + k) % group.size()];
                    Quorin_Error result;
                    if (p.run(0, &result) != p.expected || result != kQuorinSuccess)
                        failures[t] += p.member->name + " ";
                }
            });
        for (std::thread& thread : threads) thread.join();
        for (size_t t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], "") << "thread " << t;
    }
}

}  // namespace
}  // namespace quorin::test
