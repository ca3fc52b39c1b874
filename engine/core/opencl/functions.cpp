#include "engine/core/opencl/functions.h"

#include <dlfcn.h>

namespace nemra::core::opencl {

namespace {

const Functions* load() {
    void* const library = dlopen("libOpenCL.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!library) return nullptr;
    static Functions functions;
    bool isWhole = true;
#define NEMRA_OPENCL_LOAD(name)                                                         \
    functions.name = reinterpret_cast<decltype(functions.name)>(dlsym(library, #name)); \
    isWhole = isWhole && functions.name;
    NEMRA_OPENCL_FUNCTIONS(NEMRA_OPENCL_LOAD)
#undef NEMRA_OPENCL_LOAD
    return isWhole ? &functions : nullptr;
}

}  // namespace

const Functions* functions() {
    static const Functions* const loaded = load();
    return loaded;
}

}  // namespace nemra::core::opencl
