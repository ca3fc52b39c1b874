// Target: the gzip forms. The magic number is put in.
#include <vector>

#include "tests/fuzz/read_and_write.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    std::vector<std::uint8_t> bytes(data, data + size);
    bytes[0] = 0x1f;
    bytes[1] = 0x8b;
    return nemra::fuzz::readAndWrite(bytes.data(), bytes.size());
}
