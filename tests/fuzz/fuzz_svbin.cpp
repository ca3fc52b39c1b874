// Target: the reader of svbin. The identifier is put in, so that no run is lost on finding it.
#include <cstring>
#include <vector>

#include "engine/node/svbin/svbin.h"
#include "tests/fuzz/read_and_write.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 8) return 0;
    std::vector<std::uint8_t> bytes(data, data + size);
    std::memcpy(bytes.data() + 4, nemra::node::kSvbinIdentifier.data(), 4);
    return nemra::fuzz::readAndWrite(bytes.data(), bytes.size());
}
