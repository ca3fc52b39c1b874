/* libnemraCommon: what every caller of the engine needs. */
#ifndef NEMRA_FLAT_COMMON_H
#define NEMRA_FLAT_COMMON_H

#include "nemra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Frees a text or a block of bytes that the engine allocated for the caller. Null is fine. */
NEMRA_API void freeCharArray(char* text);

#ifdef __cplusplus
}
#endif

#endif
