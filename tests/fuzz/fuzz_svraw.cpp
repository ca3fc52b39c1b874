// Target: the reader of svraw. Magic, version and the checksums of what looks like chunks are put in, so that no run is lost on
// them.
#include <libdeflate.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "engine/common/log.h"
#include "engine/core/result/svraw.h"
#include "engine/core/result/svraw_layout.h"
#include "engine/node/node_class.h"

using namespace nemra;

namespace {

void demand(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void mendChecksums(std::vector<char>& bytes) {
    std::size_t at = core::svraw::kFileHead;
    while (bytes.size() - at >= core::svraw::kChunkHead + core::svraw::kChunkTail) {
        std::uint64_t size = 0;
        std::memcpy(&size, bytes.data() + at + 8, sizeof size);
        if (size > bytes.size() - at - core::svraw::kChunkHead - core::svraw::kChunkTail) return;
        const std::size_t covered = core::svraw::kChunkHead + static_cast<std::size_t>(size);
        const std::uint32_t sum = libdeflate_crc32(0, bytes.data() + at, covered);
        std::memcpy(bytes.data() + at + covered, &sum, sizeof sum);
        at += covered + core::svraw::kChunkTail;
    }
}

bool same(const Buffer& a, const Buffer& b) { return a.text() == b.text(); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < core::svraw::kFileHead) return 0;
    node::registerClasses();
    std::vector<char> bytes(data, data + size);
    std::memcpy(bytes.data(), core::kSvrawMagic.data(), core::kSvrawMagic.size());
    std::memcpy(bytes.data() + core::kSvrawMagic.size(), &core::kSvrawVersion, sizeof core::kSvrawVersion);
    mendChecksums(bytes);
    int errors = 0;
    const log::Capture capture([&](const log::Message& message) { errors += message.level == NEMRA_LOG_ERROR; });
    const auto raw = core::readSvraw(bytes, "fuzz");
    demand(errors == (raw ? 0 : 1), "a refusal has one error, success none");
    if (!raw) return 0;
    const Buffer written = core::writeSvraw(*raw);
    const auto again = core::readSvraw(written.bytes(), "fuzz");
    demand(again != nullptr, "what was written can't be read");
    demand(same(core::writeSvraw(*again), written), "something was lost");
    raw->view();
    return 0;
}
