/// Embree 3 and 4 under one face. Version 4 dropped the context argument; the rest that we use is the same.
#pragma once

#if __has_include(<embree4/rtcore.h>)
#include <embree4/rtcore.h>
#else
#include <embree3/rtcore.h>
#endif

namespace nemra::core::embree {

/// How far a packet of rays is alike.
enum class Coherence { coherent, incoherent };

#if RTC_VERSION_MAJOR >= 4

struct Query {
    RTCIntersectArguments intersect;
    RTCOccludedArguments occluded;
    // Kernels compiled for several instruction sets use this: nothing here may become a function that the linker shares.
    explicit inline __attribute__((always_inline)) Query(Coherence coherence) {
        const RTCRayQueryFlags flags =
            coherence == Coherence::coherent ? RTC_RAY_QUERY_FLAG_COHERENT : RTC_RAY_QUERY_FLAG_INCOHERENT;
        rtcInitIntersectArguments(&intersect);
        rtcInitOccludedArguments(&occluded);
        intersect.flags = flags;
        occluded.flags = flags;
    }
};
inline __attribute__((always_inline)) void intersect(const int* valid, RTCScene scene, Query& query, RTCRayHit4* rays) {
    rtcIntersect4(valid, scene, rays, &query.intersect);
}
inline __attribute__((always_inline)) void intersect(const int* valid, RTCScene scene, Query& query, RTCRayHit8* rays) {
    rtcIntersect8(valid, scene, rays, &query.intersect);
}
inline __attribute__((always_inline)) void occluded(const int* valid, RTCScene scene, Query& query, RTCRay4* rays) {
    rtcOccluded4(valid, scene, rays, &query.occluded);
}
inline __attribute__((always_inline)) void occluded(const int* valid, RTCScene scene, Query& query, RTCRay8* rays) {
    rtcOccluded8(valid, scene, rays, &query.occluded);
}
inline __attribute__((always_inline)) void intersect(RTCScene scene, Query& query, RTCRayHit* ray) {
    rtcIntersect1(scene, ray, &query.intersect);
}
inline __attribute__((always_inline)) void occluded(RTCScene scene, Query& query, RTCRay* ray) {
    rtcOccluded1(scene, ray, &query.occluded);
}

#else

struct Query {
    RTCIntersectContext context;
    // Kernels compiled for several instruction sets use this: nothing here may become a function that the linker shares.
    explicit inline __attribute__((always_inline)) Query(Coherence coherence) {
        rtcInitIntersectContext(&context);
        context.flags =
            coherence == Coherence::coherent ? RTC_INTERSECT_CONTEXT_FLAG_COHERENT : RTC_INTERSECT_CONTEXT_FLAG_INCOHERENT;
    }
};
inline __attribute__((always_inline)) void intersect(const int* valid, RTCScene scene, Query& query, RTCRayHit4* rays) {
    rtcIntersect4(valid, scene, &query.context, rays);
}
inline __attribute__((always_inline)) void intersect(const int* valid, RTCScene scene, Query& query, RTCRayHit8* rays) {
    rtcIntersect8(valid, scene, &query.context, rays);
}
inline __attribute__((always_inline)) void occluded(const int* valid, RTCScene scene, Query& query, RTCRay4* rays) {
    rtcOccluded4(valid, scene, &query.context, rays);
}
inline __attribute__((always_inline)) void occluded(const int* valid, RTCScene scene, Query& query, RTCRay8* rays) {
    rtcOccluded8(valid, scene, &query.context, rays);
}
inline __attribute__((always_inline)) void intersect(RTCScene scene, Query& query, RTCRayHit* ray) {
    rtcIntersect1(scene, &query.context, ray);
}
inline __attribute__((always_inline)) void occluded(RTCScene scene, Query& query, RTCRay* ray) {
    rtcOccluded1(scene, &query.context, ray);
}

#endif

}  // namespace nemra::core::embree
