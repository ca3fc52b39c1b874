/// A scene as the kernels see it: plain arrays and numbers, no ownership, no virtual calls on the way of a diffuse path.
/// Positions are metres relative to the middle of the scene.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/core/spectrum/grid.h"

namespace nemra::core {

class Bsdf;

enum class SurfaceKind : std::uint8_t {
    lambertian,  ///< two-sided diffuse reflector: the fast path
    black,       ///< reflects nothing
    generic,     ///< asks its Bsdf object
};

inline constexpr std::uint8_t kEmitsFront = 1;
inline constexpr std::uint8_t kEmitsBack = 2;

/// An instance's surface: what it does to light.
struct SurfaceRecord {
    SurfaceKind kind = SurfaceKind::black;
    std::uint8_t emits = 0;        ///< sides
    std::int32_t reflectance = 0;  ///< first cell of its table
    std::int32_t emission = 0;     ///< first cell of its table
    float emissionScale = 0.0F;
    const Bsdf* bsdf = nullptr;
};

/// A triangle placed in the scene.
struct alignas(64) TriangleRecord {
    float v0[3];
    std::uint32_t surface;
    float e1[3];
    float lightPdf;  ///< density per area with which light sampling picks a point here, 1/m2; 0 if it doesn't
    float e2[3];
    std::int32_t normals;  ///< index of its three shading normals; -1: flat
    float ng[3];           ///< unit normal of the front side
    float offset;          ///< m; a point this far off the plane is surely not on it, after rounding
};
static_assert(sizeof(TriangleRecord) == 64);

/// Unit normals at the three corners, front side.
struct NormalsRecord {
    float n[3][3];
};

/// An emissive triangle, a curved shape or an instance of a mesh, as light sampling sees it. Corners, normal
/// and density are those of a triangle.
struct alignas(64) LightRecord {
    float v0[3];
    float pdf;  ///< per area, 1/m2, with the chance of picking this light
    float e1[3];
    float offset;
    float e2[3];
    std::int32_t emission;
    float n[3];
    float scale;
    std::int32_t curved = -1;    ///< index of the curved shape, if it is one
    std::int32_t instance = -1;  ///< index of the instance, if it is one
    float pick;                  ///< chance of picking this light
    std::uint8_t emits;
};

struct AliasEntry {
    float threshold;
    std::int32_t other;
};

/// A plane of a small scene with the triangles that lie in it.
struct FlatPlane {
    float n[3], d;              ///< distance above the plane is n . p + d
    std::int32_t first, count;  ///< its triangles
    std::int32_t axisA, axisB;  ///< the two coordinates that tell positions in the plane apart best
};

/// Two barycentric coordinates as linear functions of the plane's two coordinates: a * [axisA] + b * [axisB] + c.
struct FlatTriangle {
    float ua, ub, uc;
    float va, vb, vc;
};

struct CameraRecord {
    float position[3];
    float corner[3];  ///< direction to the upper left corner of the image, length = distance of the image plane
    float stepX[3];   ///< from one pixel to the next
    float stepY[3];
    float right[3];  ///< unit vectors of the lens plane
    float up[3];
    float lensRadius = 0.0F;   ///< m; 0: pinhole
    float focusFactor = 1.0F;  ///< distance in focus over distance of the image plane
    std::int32_t width = 0;
    std::int32_t height = 0;
};

inline constexpr int kSubSteps = 64;  ///< parts of a wide step of WavelengthSampling
inline constexpr int kGroup = 4;      ///< channels of a response table stand in groups of four

struct SensorRecord {
    std::int32_t channels = 0;
    std::int32_t groups = 0;               ///< of responses; 0 for a box sensor
    const float* responses = nullptr;      ///< [cell][group][value x 4, rise x 4]
    const std::uint16_t* boxOf = nullptr;  ///< box of each cell
    float boxWeight = 0.0F;                ///< 1 / width of a box, 1/nm
    std::int32_t leading = -1;
    /// Pre-rounding: adding and taking away these constants rounds to a multiple of a fixed quantum.
    double coarse = 0.0;
    double fine = 0.0;
    double depth = 0.0;  ///< for distances, m
};

/// Where the ray tracing of a scene is done, for one kind of ray.
struct TraceTarget {
    const FlatPlane* planes = nullptr;  ///< all of the scene, tested in turn; null: use the Embree scene
    const FlatTriangle* flat = nullptr;
    const std::uint32_t* flatId = nullptr;  ///< index among TriangleRecords
    std::int32_t planeCount = 0;
    void* embree = nullptr;
};

struct CurvedRecord;
struct InstanceRecord;

struct KernelScene {
    const SpectralCell* spectra = nullptr;
    std::int32_t cells = 0;
    float cellWidth = 1.0F;  ///< nm

    /// How wavelengths are drawn: see WavelengthSampling.
    const SpectralCell* lambdaSteps = nullptr;
    std::int32_t lambdaStepCount = 0;

    TraceTarget camera, path, shadow;
    std::uint32_t firstTriangle[4] = {};  ///< of each kind of triangles, as numbered by Embree
    std::uint32_t firstCurved[4] = {};
    const TriangleRecord* triangles = nullptr;
    const NormalsRecord* normals = nullptr;
    const SurfaceRecord* surfaces = nullptr;
    const CurvedRecord* curved = nullptr;
    const InstanceRecord* instances = nullptr;

    const LightRecord* lights = nullptr;
    const float* lightBelow = nullptr;  ///< cumulative chances, lightCount + 1
    const AliasEntry* lightAlias = nullptr;
    std::int32_t lightCount = 0;
    bool rareLights = false;  ///< some are curved shapes or instances

    std::int32_t environment = -1;  ///< first cell of the table of an even environment; -1: dark

    CameraRecord view;
    SensorRecord sensor;
    std::uint32_t seed = 0;
    std::int32_t maxDepth = 0;  ///< 0: unlimited
    std::int32_t rouletteDepth = 5;
    std::int32_t wavelengths = 4;
};

/// The memory that one thread needs while it renders, in one block; made once, used for every tile.
struct Workspace;
Workspace* makeWorkspace(int wavelengths);
void freeWorkspace(Workspace* workspace) noexcept;
std::size_t workspaceBytes(int wavelengths) noexcept;

/// A batch of paths: sample indices [firstSample, firstSample + samples) of pixels [firstPixel, ...) of a tile, counted column by
/// column.
struct Batch {
    int x0, y0, tileHeight;
    int firstPixel;
    int pixels;
    std::uint32_t firstSample;
    std::uint32_t samples;
};

/// Paths that a batch holds at most.
inline constexpr int kBatchPaths = 1024;

/// A film's arrays.
struct FilmRecord {
    std::int32_t left;  ///< pixel of the image that the film begins with
    std::int32_t top;
    std::int32_t height;
    double* high;
    double* low;
    std::uint32_t* samples;
    std::uint64_t* squaresUpper;  ///< see SquareSums
    std::uint64_t* squaresLower;
    std::uint8_t* squaresPart;
    double* depth;
    std::uint32_t* depthSamples;
};

/// Numbers by which Embree scenes name their geometries: four kinds of triangles, four of curved shapes, then instances.
inline constexpr std::uint32_t kCurvedIds = 4;
inline constexpr std::uint32_t kInstanceIds = 8;

/// Traces a batch into the film; returns the number of samples dropped since they weren't finite.
using RenderBatch = int (*)(const KernelScene& scene, Workspace& workspace, const Batch& batch, const FilmRecord& film);

/// The fastest kernel that this processor runs.
RenderBatch bestKernel() noexcept;
RenderBatch kernelBaseline() noexcept;  ///< x86-64-v2
RenderBatch kernelWide() noexcept;      ///< x86-64-v3 (AVX2)
RenderBatch kernelWidest() noexcept;    ///< x86-64-v4 (AVX-512)
/// Whether this processor runs them.
bool hasWide() noexcept;
bool hasWidest() noexcept;

}  // namespace nemra::core
