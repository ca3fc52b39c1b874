#include <cstdlib>

#include "module/flat/nemra_common.h"

extern "C" void freeCharArray(char* text) { std::free(text); }
