/* Types of the engine's flat interface: opaque handles, enumerators, the export mark.
 *
 * Rules that hold for every function of the interface, unless its own comment says otherwise:
 * - A handle may be null, stale (its object is gone) or of another kind: the function then answers 0, false, null, an empty
 *   text or a count of 0, and never crashes. No C++ exception leaves a function.
 * - `const char*` arguments are zero-terminated UTF-8 that the caller keeps; the engine copies what it needs.
 *   A null text argument counts as an empty one.
 * - A result of type `const char*` or a pointer to const data is the engine's: it stays good until the next call on the same
 *   object, and the caller never frees it. A result of type `char*` is the caller's unless its comment says otherwise, and is
 *   freed with freeCharArray.
 * - Arrays of handles that a function returns stay the engine's, and stay good until the next call on the same object.
 * - The caller holds its interpreter lock during each call: no function waits for a callback to end.
 */
#ifndef NEMRA_FLAT_TYPES_H
#define NEMRA_FLAT_TYPES_H

#include <stdbool.h>
#include <stdint.h>

#if defined(__GNUC__)
#define NEMRA_API __attribute__((visibility("default")))
#else
#define NEMRA_API
#endif

/* A caller may hand in any number, and messages are bit sets. With a fixed underlying type each of them is a value of the
 * enumeration in C++ too; C compilers take the same type. */
#ifdef __cplusplus
#define NEMRA_FIXED : unsigned int
#else
#define NEMRA_FIXED
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* What a script can keep. The pointers are ids of the engine's slot table, not addresses. */
typedef struct nemra_raw_t nemra_raw_t;
typedef struct nemra_server_t nemra_server_t;
typedef struct nemra_renderer_t nemra_renderer_t;
typedef struct nemra_onode_t nemra_onode_t;
typedef struct nemra_instance_t nemra_instance_t;
typedef struct nemra_scene_t nemra_scene_t;
typedef struct nemra_geom_t nemra_geom_t;

/* What lives inside one call of a binding: plain pointers. */
typedef struct nemra_parameter nemra_parameter;
typedef struct nemra_value nemra_value;
typedef struct nemra_table nemra_table;
typedef struct nemra_color nemra_color;

/* Message levels, a bit set. */
typedef enum LogLevel_t NEMRA_FIXED {
    NEMRA_LOG_NONE = 0,
    NEMRA_LOG_DEBUG = 2,
    NEMRA_LOG_INFO = 4,
    NEMRA_LOG_WARNING = 8,
    NEMRA_LOG_ERROR = 16,
    NEMRA_LOG_CRITICAL = 32,
    NEMRA_LOG_DEFAULT = 60,
    NEMRA_LOG_ALL = 63
} LogLevel_t;

typedef enum NemraRendererState_t NEMRA_FIXED {
    NEMRA_RENDERER_IDLE = 0,
    NEMRA_RENDERER_RUNNING = 1,
    NEMRA_RENDERER_PAUSED = 2,
    NEMRA_RENDERER_STOPPING = 3
} NemraRendererState_t;

typedef enum nemra_renderer_stat_t NEMRA_FIXED {
    NEMRA_STAT_TIME = 0,        /* s, elapsed rendering time without pauses */
    NEMRA_STAT_SAMPLES = 1,     /* paths traced */
    NEMRA_STAT_SPP = 2,         /* mean samples per pixel */
    NEMRA_STAT_SPS_AVERAGE = 3, /* 1/s, since the start */
    NEMRA_STAT_SPS_CURRENT = 4, /* 1/s, over the last statistics interval */
    NEMRA_STAT_WRONG_RATE = 5,  /* 1/s, samples dropped since they were not finite */
    NEMRA_STAT_HALT_TIME = 6,   /* s, 0 if off */
    NEMRA_STAT_HALT_SPP = 7     /* 0 if off */
} nemra_renderer_stat_t;

typedef enum nemra_renderer_halt_cond_t NEMRA_FIXED {
    NEMRA_HALT_PAUSES = 0,
    NEMRA_HALT_STOPS = 1,
    NEMRA_HALT_NOCHANGE = 2
} nemra_renderer_halt_cond_t;

/* Answers of nemraParameter_type. */
typedef enum nemra_parameter_type_t NEMRA_FIXED {
    NEMRA_PARAMETER_NONE = 0,
    NEMRA_PARAMETER_INFO = 1, /* read-only text */
    NEMRA_PARAMETER_REAL = 2,
    NEMRA_PARAMETER_INTEGER = 3,
    NEMRA_PARAMETER_TEXT = 4,
    NEMRA_PARAMETER_FILE = 5, /* text that names a file */
    NEMRA_PARAMETER_LINK = 6, /* text that names a node or a geometry */
    NEMRA_PARAMETER_BOOLEAN = 7,
    NEMRA_PARAMETER_VECTOR = 8, /* three components with a unit: a position, an extent */
    NEMRA_PARAMETER_DIRECTION = 9,
    NEMRA_PARAMETER_CHOICE = 10,
    NEMRA_PARAMETER_TABLE = 11,
    NEMRA_PARAMETER_COLOR = 12,
    NEMRA_PARAMETER_MATRIX2 = 13, /* row-major */
    NEMRA_PARAMETER_MATRIX3 = 14  /* row-major */
} nemra_parameter_type_t;

/* Answers of nemraValue_type. */
typedef enum nemra_value_type_t NEMRA_FIXED {
    NEMRA_VALUE_NONE = 0,
    NEMRA_VALUE_TEXT = 1,
    NEMRA_VALUE_BOOLEAN = 2,
    NEMRA_VALUE_INT32 = 3,
    NEMRA_VALUE_UINT64 = 4,
    NEMRA_VALUE_FLOAT = 5,
    NEMRA_VALUE_DOUBLE = 6,
    NEMRA_VALUE_BINARY = 7,
    NEMRA_VALUE_LINK = 8 /* text that names a node */
} nemra_value_type_t;

/* Answers of nemraNode_getRawDataType. */
typedef enum nemra_raw_data_type_t NEMRA_FIXED {
    NEMRA_RAW_DATA_NONE = 0,
    NEMRA_RAW_DATA_TEXT = 1,
    NEMRA_RAW_DATA_RESERVED = 2,
    NEMRA_RAW_DATA_INDEX = 3,
    NEMRA_RAW_DATA_INT32 = 4,
    NEMRA_RAW_DATA_FLOAT = 5,
    NEMRA_RAW_DATA_DOUBLE = 6,
    NEMRA_RAW_DATA_BINARY = 7
} nemra_raw_data_type_t;

/* Values of the `quantity` argument of nemraRawGetLightQuantity. */
typedef enum nemra_quantity_t NEMRA_FIXED {
    NEMRA_QUANTITY_RAW = 0,
    NEMRA_QUANTITY_SENSOR_IRRADIANCE = 1,
    NEMRA_QUANTITY_SCENE_RADIANCE = 2,
    NEMRA_QUANTITY_SCENE_IRRADIANCE = 3,
    NEMRA_QUANTITY_SENSOR_POWER = 4,
    NEMRA_QUANTITY_SENSOR_EXPOSURE = 5,
    NEMRA_QUANTITY_COMPUTED_BSDF = 6
} nemra_quantity_t;

#ifdef __cplusplus
}
#endif

#endif
