// Target: the reader of svxml. Bytes of other encodings are left to their own targets.
#include <algorithm>

#include "tests/fuzz/read_and_write.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const bool isText = size > 0 && (data[0] == '<' || data[0] == 0xEF || data[0] <= ' ');
    return isText ? nemra::fuzz::readAndWrite(data, size) : 0;
}
