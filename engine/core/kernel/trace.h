/// Finding what rays meet. Small scenes are tested triangle by triangle for eight rays at once, which takes a fraction of the time that
/// walking a tree takes for rays that have nothing in common; all others go to Embree in packets.
#pragma once

#include "engine/core/embree/embree.h"
#include "engine/core/kernel/simd.h"
#include "engine/core/kernel/workspace.h"

namespace nemra::core::NEMRA_KERNEL {

NEMRA_INLINE Vec8 loadVec(const float* x, const float* y, const float* z, int i) { return {load(x + i), load(y + i), load(z + i)}; }

struct FlatHit {
    F8 t, u, v;
    I8 inside;
};
/// Where eight rays meet a triangle's plane, and whether within it and in (0, far).
NEMRA_INLINE FlatHit meet(const FlatTriangle& q, Vec8 o, Vec8 d, F8 far) {
    const F8 along = q.n[0] * d.x + q.n[1] * d.y + q.n[2] * d.z;
    const F8 above = q.n[0] * o.x + q.n[1] * o.y + (q.n[2] * o.z + q.d);
    FlatHit h;
    h.t = -above / along;
    const Vec8 p = o + d * h.t;
    h.u = q.u[0] * p.x + q.u[1] * p.y + (q.u[2] * p.z + q.u0);
    h.v = q.v[0] * p.x + q.v[1] * p.y + (q.v[2] * p.z + q.v0);
    const F8 least = smaller(smaller(h.u, h.v), 1.0F - h.u - h.v);
    h.inside = (h.t > 0.0F) & (h.t < far) & (least >= 0.0F);
    return h;
}

static void closestFlat(const TraceTarget& target, const RayArrays& rays, int count, Workspace& w) {
    for (int i = 0; i < count; i += kLanes) {
        const Vec8 o = loadVec(rays.ox, rays.oy, rays.oz, i);
        const Vec8 d = loadVec(rays.dx, rays.dy, rays.dz, i);
        F8 t = splat(3.0e38F);
        F8 u = splat(0.0F);
        F8 v = splat(0.0F);
        I8 id = splatInt(-1);
        for (int k = 0; k < target.flatCount; ++k) {
            const FlatHit h = meet(target.flat[k], o, d, t);
            t = select(h.inside, h.t, t);
            u = select(h.inside, h.u, u);
            v = select(h.inside, h.v, v);
            id = select(h.inside, splatInt(k), id);
        }
        store(w.hitT + i, t);
        store(w.hitU + i, u);
        store(w.hitV + i, v);
        for (int lane = 0; lane < kLanes; ++lane) w.hit[i + lane] = id[lane] < 0 ? kMiss : target.flatId[id[lane]];
    }
}

static void blockedFlat(const TraceTarget& target, int count, Workspace& w) {
    for (int i = 0; i < count; i += kLanes) {
        const Vec8 o = loadVec(w.qox, w.qoy, w.qoz, i);
        const Vec8 d = loadVec(w.qdx, w.qdy, w.qdz, i);
        I8 blocked = splatInt(0);
        const F8 far = splat(1.0F);
        for (int k = 0; k < target.flatCount; ++k) {
            blocked |= meet(target.flat[k], o, d, far).inside;
            if ((k & 7) == 7 && laneBits(blocked) == 0xFF) break;
        }
        const int bits = laneBits(blocked);
        for (int lane = 0; lane < kLanes; ++lane) w.blocked[i + lane] = bits >> lane & 1;
    }
}

static void closestEmbree(const KernelScene& scene, const TraceTarget& target, const RayArrays& rays, int count, bool coherent,
                          Workspace& w) {
    embree::Query query(coherent ? embree::Coherence::coherent : embree::Coherence::incoherent);
    for (int i = 0; i < count; i += kLanes) {
        RTCRayHit8 packet;
        alignas(32) int valid[kLanes];
        std::memcpy(packet.ray.org_x, rays.ox + i, 32);
        std::memcpy(packet.ray.org_y, rays.oy + i, 32);
        std::memcpy(packet.ray.org_z, rays.oz + i, 32);
        std::memcpy(packet.ray.dir_x, rays.dx + i, 32);
        std::memcpy(packet.ray.dir_y, rays.dy + i, 32);
        std::memcpy(packet.ray.dir_z, rays.dz + i, 32);
        store(packet.ray.tnear, splat(0.0F));
        store(packet.ray.time, splat(0.0F));
        store(packet.ray.tfar, splat(3.0e38F));
        store(packet.ray.mask, splatInt(-1));
        store(packet.ray.flags, splatInt(0));
        store(packet.hit.geomID, splatInt(-1));
        store(packet.hit.instID[0], splatInt(-1));
        for (int lane = 0; lane < kLanes; ++lane) valid[lane] = i + lane < count ? -1 : 0;
        embree::intersect8(valid, static_cast<RTCScene>(target.embree), query, &packet);
        std::memcpy(w.hitT + i, packet.ray.tfar, 32);
        std::memcpy(w.hitU + i, packet.hit.u, 32);
        std::memcpy(w.hitV + i, packet.hit.v, 32);
        for (int lane = 0; lane < kLanes; ++lane) {
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
    for (int i = 0; i < count; i += kLanes) {
        RTCRay8 packet;
        alignas(32) int valid[kLanes];
        std::memcpy(packet.org_x, w.qox + i, 32);
        std::memcpy(packet.org_y, w.qoy + i, 32);
        std::memcpy(packet.org_z, w.qoz + i, 32);
        std::memcpy(packet.dir_x, w.qdx + i, 32);
        std::memcpy(packet.dir_y, w.qdy + i, 32);
        std::memcpy(packet.dir_z, w.qdz + i, 32);
        store(packet.tnear, splat(0.0F));
        store(packet.time, splat(0.0F));
        store(packet.tfar, splat(1.0F));
        store(packet.mask, splatInt(-1));
        store(packet.flags, splatInt(0));
        for (int lane = 0; lane < kLanes; ++lane) valid[lane] = i + lane < count ? -1 : 0;
        embree::occluded8(valid, static_cast<RTCScene>(target.embree), query, &packet);
        for (int lane = 0; lane < kLanes; ++lane) w.blocked[i + lane] = packet.tfar[lane] < 0.0F;
    }
}

/// What each ray meets first, into the hit arrays.
NEMRA_INLINE void traceClosest(const KernelScene& scene, const RayArrays& rays, int count, bool fromCamera, Workspace& w) {
    const TraceTarget& target = fromCamera ? scene.camera : scene.path;
    if (target.flat) {
        closestFlat(target, rays, count, w);
    } else if (target.embree) {
        closestEmbree(scene, target, rays, count, fromCamera, w);
    } else {
        for (int i = 0; i < count; ++i) w.hit[i] = kMiss;
    }
}

/// Which of the packed shadow rays are blocked before their end (at parameter 1).
NEMRA_INLINE void traceShadows(const KernelScene& scene, int count, Workspace& w) {
    if (scene.shadow.flat) {
        blockedFlat(scene.shadow, count, w);
    } else if (scene.shadow.embree) {
        blockedEmbree(scene.shadow, count, w);
    } else {
        for (int i = 0; i < count; ++i) w.blocked[i] = 0;
    }
}

}  // namespace nemra::core::NEMRA_KERNEL
