/// Finding what rays meet. Small scenes are tested plane by plane for all lanes at once, which takes a fraction of the time that
/// walking a tree takes for rays that have nothing in common; all others go to Embree in packets.
#pragma once

#include "engine/core/embree/embree.h"
#include "engine/core/kernel/simd.h"
#include "engine/core/kernel/workspace.h"

namespace nemra::core::NEMRA_KERNEL {

NEMRA_INLINE VecN loadVec(const float* x, const float* y, const float* z, int i) {
    return {load(x + i), load(y + i), load(z + i)};
}

/// Whether positions of a plane lie within one of its triangles.
NEMRA_INLINE IntN within(const FlatTriangle& q, FloatN a, FloatN b, FloatN& u, FloatN& v) {
    u = q.ua * a + (q.ub * b + q.uc);
    v = q.va * a + (q.vb * b + q.vc);
    return smaller(smaller(u, v), 1.0F - u - v) >= 0.0F;
}

static void closestFlat(const TraceTarget& target, const RayArrays& rays, int count, Workspace& w) {
    for (int i = 0; i < count; i += kLanes) {
        const FloatN o[3] = {load(rays.ox + i), load(rays.oy + i), load(rays.oz + i)};
        const FloatN d[3] = {load(rays.dx + i), load(rays.dy + i), load(rays.dz + i)};
        FloatN nearest = splat(3.0e38F);
        FloatN hitU = splat(0.0F);
        FloatN hitV = splat(0.0F);
        IntN id = splatInt(-1);
        for (int k = 0; k < target.planeCount; ++k) {
            const FlatPlane& plane = target.planes[k];
            const FloatN along = plane.n[0] * d[0] + plane.n[1] * d[1] + plane.n[2] * d[2];
            const FloatN above = plane.n[0] * o[0] + plane.n[1] * o[1] + (plane.n[2] * o[2] + plane.d);
            const FloatN t = -above / along;
            const IntN ahead = (t > 0.0F) & (t < nearest);
            if (laneBits(ahead) == 0) continue;
            const FloatN a = o[plane.axisA] + d[plane.axisA] * t;
            const FloatN b = o[plane.axisB] + d[plane.axisB] * t;
            IntN met = splatInt(0);
            for (int q = plane.first; q < plane.first + plane.count; ++q) {
                FloatN u, v;
                const IntN inside = within(target.flat[q], a, b, u, v) & ahead;
                hitU = select(inside, u, hitU);
                hitV = select(inside, v, hitV);
                id = select(inside, splatInt(q), id);
                met |= inside;
            }
            nearest = select(met, t, nearest);
        }
        store(w.hitT + i, nearest);
        store(w.hitU + i, hitU);
        store(w.hitV + i, hitV);
        for (int lane = 0; lane < kLanes; ++lane) w.hit[i + lane] = id[lane] < 0 ? kMiss : target.flatId[id[lane]];
    }
}

static void blockedFlat(const TraceTarget& target, int count, Workspace& w) {
    for (int i = 0; i < count; i += kLanes) {
        const FloatN o[3] = {load(w.qox + i), load(w.qoy + i), load(w.qoz + i)};
        const FloatN d[3] = {load(w.qdx + i), load(w.qdy + i), load(w.qdz + i)};
        IntN blocked = splatInt(0);
        for (int k = 0; k < target.planeCount; ++k) {
            const FlatPlane& plane = target.planes[k];
            const FloatN along = plane.n[0] * d[0] + plane.n[1] * d[1] + plane.n[2] * d[2];
            const FloatN above = plane.n[0] * o[0] + plane.n[1] * o[1] + (plane.n[2] * o[2] + plane.d);
            // The segment ends at parameter 1: it crosses if its ends lie on different sides. Most planes of a room are never
            // crossed.
            const IntN crosses = (above * (above + along) < 0.0F) & ~blocked;
            if (laneBits(crosses) == 0) continue;
            const FloatN t = -above / along;
            const FloatN a = o[plane.axisA] + d[plane.axisA] * t;
            const FloatN b = o[plane.axisB] + d[plane.axisB] * t;
            for (int q = plane.first; q < plane.first + plane.count; ++q) {
                FloatN u, v;
                blocked |= within(target.flat[q], a, b, u, v) & crosses;
            }
            if (laneBits(blocked) == kAllLanes) break;
        }
        const int bits = laneBits(blocked);
        for (int lane = 0; lane < kLanes; ++lane) w.blocked[i + lane] = bits >> lane & 1;
    }
}

/// Rays that Embree takes at once: wider packets gain nothing for rays that have little in common.
constexpr int kPacket = kLanes < 8 ? 4 : 8;
template <int Width>
struct Packets;
template <>
struct Packets<4> {
    using Ray = RTCRay4;
    using RayHit = RTCRayHit4;
};
template <>
struct Packets<8> {
    using Ray = RTCRay8;
    using RayHit = RTCRayHit8;
};

/// Fills in what is the same for all of a packet's rays.
template <class Ray>
NEMRA_INLINE void beginPacket(Ray& packet, int* valid, int left, float far) {
    for (int lane = 0; lane < kPacket; ++lane) {
        packet.tnear[lane] = 0.0F;
        packet.time[lane] = 0.0F;
        packet.tfar[lane] = far;
        packet.mask[lane] = ~0U;
        packet.flags[lane] = 0;
        valid[lane] = lane < left ? -1 : 0;
    }
}

static void closestEmbree(const KernelScene& scene, const TraceTarget& target, const RayArrays& rays, int count, bool coherent,
                          Workspace& w) {
    embree::Query query(coherent ? embree::Coherence::coherent : embree::Coherence::incoherent);
    constexpr std::size_t kBytes = kPacket * sizeof(float);
    for (int i = 0; i < count; i += kPacket) {
        Packets<kPacket>::RayHit packet;
        alignas(32) int valid[kPacket];
        std::memcpy(packet.ray.org_x, rays.ox + i, kBytes);
        std::memcpy(packet.ray.org_y, rays.oy + i, kBytes);
        std::memcpy(packet.ray.org_z, rays.oz + i, kBytes);
        std::memcpy(packet.ray.dir_x, rays.dx + i, kBytes);
        std::memcpy(packet.ray.dir_y, rays.dy + i, kBytes);
        std::memcpy(packet.ray.dir_z, rays.dz + i, kBytes);
        beginPacket(packet.ray, valid, count - i, 3.0e38F);
        for (int lane = 0; lane < kPacket; ++lane) {
            packet.hit.geomID[lane] = RTC_INVALID_GEOMETRY_ID;
            packet.hit.instID[0][lane] = RTC_INVALID_GEOMETRY_ID;
        }
        embree::intersect(valid, static_cast<RTCScene>(target.embree), query, &packet);
        std::memcpy(w.hitT + i, packet.ray.tfar, kBytes);
        std::memcpy(w.hitU + i, packet.hit.u, kBytes);
        std::memcpy(w.hitV + i, packet.hit.v, kBytes);
        for (int lane = 0; lane < kPacket; ++lane) {
            const std::uint32_t geometry = packet.hit.geomID[lane];
            const std::uint32_t instance = packet.hit.instID[0][lane];
            std::uint32_t id = kMiss;
            if (geometry == RTC_INVALID_GEOMETRY_ID || valid[lane] == 0) {
                id = kMiss;
            } else if (instance != RTC_INVALID_GEOMETRY_ID) {
                id = kInstanceHit | (instance - kInstanceIds);
                w.hitInner[i + lane] = packet.hit.primID[lane];
            } else if (geometry < kCurvedIds) {
                id = scene.firstTriangle[geometry] + packet.hit.primID[lane];
            } else {
                id = kCurvedHit | (scene.firstCurved[geometry - kCurvedIds] + packet.hit.primID[lane]);
            }
            w.hit[i + lane] = id;
        }
    }
}

static void blockedEmbree(const TraceTarget& target, int count, Workspace& w) {
    embree::Query query(embree::Coherence::incoherent);
    constexpr std::size_t kBytes = kPacket * sizeof(float);
    for (int i = 0; i < count; i += kPacket) {
        Packets<kPacket>::Ray packet;
        alignas(32) int valid[kPacket];
        std::memcpy(packet.org_x, w.qox + i, kBytes);
        std::memcpy(packet.org_y, w.qoy + i, kBytes);
        std::memcpy(packet.org_z, w.qoz + i, kBytes);
        std::memcpy(packet.dir_x, w.qdx + i, kBytes);
        std::memcpy(packet.dir_y, w.qdy + i, kBytes);
        std::memcpy(packet.dir_z, w.qdz + i, kBytes);
        beginPacket(packet, valid, count - i, 1.0F);
        embree::occluded(valid, static_cast<RTCScene>(target.embree), query, &packet);
        for (int lane = 0; lane < kPacket; ++lane) w.blocked[i + lane] = packet.tfar[lane] < 0.0F;
    }
}

/// What each ray meets first, into the hit arrays.
NEMRA_INLINE void traceClosest(const KernelScene& scene, const RayArrays& rays, int count, bool fromCamera, Workspace& w) {
    const TraceTarget& target = fromCamera ? scene.camera : scene.path;
    if (target.planes) {
        closestFlat(target, rays, count, w);
    } else if (target.embree) {
        closestEmbree(scene, target, rays, count, fromCamera, w);
    } else {
        for (int i = 0; i < count; ++i) w.hit[i] = kMiss;
    }
}

/// Which of the packed shadow rays are blocked before their end (at parameter 1).
NEMRA_INLINE void traceShadows(const KernelScene& scene, int count, Workspace& w) {
    if (scene.shadow.planes) {
        blockedFlat(scene.shadow, count, w);
    } else if (scene.shadow.embree) {
        blockedEmbree(scene.shadow, count, w);
    } else {
        for (int i = 0; i < count; ++i) w.blocked[i] = 0;
    }
}

}  // namespace nemra::core::NEMRA_KERNEL
