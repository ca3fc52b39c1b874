#include "engine/common/log.h"

#include <cstdio>

namespace nemra::log {

void emit(LogLevel_t, std::string_view source, std::string_view text) {
    std::fprintf(stderr, "%.*s: %.*s\n", int(source.size()), source.data(), int(text.size()), text.data());
}

}  // namespace nemra::log
