/* libnemra: results. */
#ifndef NEMRA_FLAT_RAW_H
#define NEMRA_FLAT_RAW_H

#include "nemra_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes one byte and returns 1 to go on. Runs on the calling thread, inside the call that it was given to. */
typedef int (*nemra_byte_sink)(void* user, char byte);

/* These make a new raw, the caller's; null on failure, with a message. */
NEMRA_API nemra_raw_t* nemraRawCopy(nemra_raw_t* raw);
NEMRA_API nemra_raw_t* nemraRawReadSvraw(const char* filename);
NEMRA_API nemra_raw_t* nemraRawReadOpenExr(const char* filename);
/* data: a serialised node of the image family, size bytes. */
NEMRA_API nemra_raw_t* nemraRawFromImageNode(const char* data, int64_t size);
NEMRA_API void nemraRawRelease(nemra_raw_t** handle);

NEMRA_API int nemraRawWidth(nemra_raw_t* raw);
NEMRA_API int nemraRawHeight(nemra_raw_t* raw);
NEMRA_API int nemraRawChannelCount(nemra_raw_t* raw);
NEMRA_API double nemraRawRenderTime(nemra_raw_t* raw); /* s */
NEMRA_API double nemraRawSPS(nemra_raw_t* raw);        /* samples per second */
NEMRA_API double nemraRawSPP(nemra_raw_t* raw);        /* samples per pixel, mean */
NEMRA_API bool nemraRawIsDraft(nemra_raw_t* raw);

NEMRA_API bool nemraRawHasChannel(nemra_raw_t* raw, const char* name);
/* "variance", "spp", "snr", "depth" */
NEMRA_API bool nemraRawHasMetaChannel(nemra_raw_t* raw, const char* name);
/* Index of a channel or a meta channel, or -1. Meta channels follow the channels. */
NEMRA_API int nemraRawChannelIndex(nemra_raw_t* raw, const char* name);
/* Engine's text; null for an index out of bounds. */
NEMRA_API const char* nemraRawChannelName(nemra_raw_t* raw, int index);
/* "unknown", "energy", "luminous", "spectral"; null for an index out of bounds. */
NEMRA_API const char* nemraRawChannelResponse(nemra_raw_t* raw, int index);
NEMRA_API bool nemraRawIsChannelLuminous(nemra_raw_t* raw, int index);
NEMRA_API bool nemraRawIsChannelEnergy(nemra_raw_t* raw, int index);
NEMRA_API bool nemraRawIsChannelSpectral(nemra_raw_t* raw, int index);
/* m; 0 for a channel that isn't spectral. */
NEMRA_API double nemraRawChannelWavelength(nemra_raw_t* raw, int index);

NEMRA_API double nemraRawGetAutoRangeValue(nemra_raw_t* raw);
/* Clamps the rectangle to the resolution and rates it. */
NEMRA_API double nemraRawGetUGR(nemra_raw_t* raw, int x1, int y1, int x2, int y2);
/* One sample; quantity is a nemra_quantity_t. 0 out of bounds. Takes a few nanoseconds and no lock. */
NEMRA_API double nemraRawGetLightQuantity(nemra_raw_t* raw, int channel, int x, int y, int quantity);
NEMRA_API int nemraRawGetQuantityCount(nemra_raw_t* raw);
/* The index-th quantity that this raw provides, a nemra_quantity_t; NEMRA_QUANTITY_RAW out of bounds. */
NEMRA_API nemra_quantity_t nemraRawGetQuantity(nemra_raw_t* raw, int index);
/* Computes the meta channel "snr". */
NEMRA_API void nemraRawGenerateSNR(nemra_raw_t* raw);

/* Engine's texts; null out of bounds or without one. */
NEMRA_API const char* nemraRawGetInstrumentName(nemra_raw_t* raw);
NEMRA_API const char* nemraRawGetInstrumentOutput(nemra_raw_t* raw, int index);
NEMRA_API const char* nemraRawGetOutputName(nemra_raw_t* raw);
NEMRA_API const char* nemraRawGetXHeaderName(nemra_raw_t* raw, int x);
NEMRA_API const char* nemraRawGetYHeaderName(nemra_raw_t* raw, int y);

/* Formats that the current output can be written in. Engine's texts. */
NEMRA_API int nemraRawGetOutputFormatSize(nemra_raw_t* raw);
NEMRA_API const char* nemraRawGetOutputFormat(nemra_raw_t* raw, int index);
NEMRA_API const char* nemraRawGetDefaultFormat(nemra_raw_t* raw);

/* 0 for success. */
NEMRA_API int nemraRawImportOutput(nemra_raw_t* raw, nemra_raw_t* other, const char* output_name);
NEMRA_API int nemraRawWriteResult(nemra_raw_t* raw, const char* filename, const char* format);
NEMRA_API int nemraRawWriteRaw(nemra_raw_t* raw, const char* filename, const char* format);
NEMRA_API int nemraRawWriteAuto(nemra_raw_t* raw, const char* filename);
/* The encoded result, the caller's; null on failure. */
NEMRA_API char* nemraRawWriteResultBytes(nemra_raw_t* raw, uint32_t* size, const char* format);

/* Give the serialised node byte by byte to the sink. The result says nothing. */
NEMRA_API int nemraRawGetInstrument(nemra_raw_t* raw, void* user, nemra_byte_sink sink);
NEMRA_API int nemraRawGetOutput(nemra_raw_t* raw, void* user, nemra_byte_sink sink);
NEMRA_API bool nemraRawSetInstrument(nemra_raw_t* raw, const char* data, int size);
NEMRA_API bool nemraRawSetOutput(nemra_raw_t* raw, const char* data, int size);

NEMRA_API bool nemraRawIsCompatible(nemra_raw_t* raw, nemra_raw_t* other);
/* Accumulates `other` into `raw`, weighed by samples. False if they aren't compatible. */
NEMRA_API bool nemraRawAdd(nemra_raw_t* raw, nemra_raw_t* other);
/* Runs the output's filters; fast is the draft mode. */
NEMRA_API bool nemraRawFilter(nemra_raw_t* raw, bool fast);
NEMRA_API void nemraRawRemoveChannels(nemra_raw_t* raw);

NEMRA_API bool nemraRawGetImage8bitInfo(nemra_raw_t* raw, int* width, int* height, int* stride, int* alignment);
NEMRA_API int nemraRawGetImage8bitProfile(nemra_raw_t* raw, void* user, nemra_byte_sink sink);

#ifdef __cplusplus
}
#endif

#endif
