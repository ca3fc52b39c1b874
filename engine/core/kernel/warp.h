/// From the unit square to discs and directions.
#pragma once

#include "engine/core/kernel/simd.h"

namespace nemra::core::NEMRA_KERNEL {

/// Unit square to unit disc, area preserving, neighbours stay neighbours (Shirley and Chiu, 1997).
NEMRA_INLINE void toDisc(F8 u, F8 v, F8& x, F8& y) {
    const F8 a = u * 2.0F - 1.0F;
    const F8 b = v * 2.0F - 1.0F;
    const I8 wide = magnitude(a) > magnitude(b);
    const F8 r = select(wide, a, b);
    const F8 other = select(wide, b, a);
    const F8 ratio = select(r != 0.0F, other / r, splat(0.0F));
    // Taylor series on [-pi/4, pi/4]; the last terms left out are below 2e-8.
    const F8 t = ratio * 0.785398163397448310F;
    const F8 q = t * t;
    const F8 s = t * (1.0F + q * (-1.0F / 6.0F + q * (1.0F / 120.0F + q * (-1.0F / 5040.0F + q * (1.0F / 362880.0F)))));
    const F8 c = 1.0F + q * (-0.5F + q * (1.0F / 24.0F + q * (-1.0F / 720.0F + q * (1.0F / 40320.0F))));
    x = r * select(wide, c, s);
    y = r * select(wide, s, c);
}

/// Two unit vectors that make a right-handed frame with n (Duff et al., "Building an Orthonormal Basis, Revisited", JCGT 6(1), 2017).
NEMRA_INLINE void frame(Vec8 n, Vec8& s, Vec8& t) {
    const F8 sign = flipSign(splat(1.0F), n.z);
    const F8 a = -1.0F / (sign + n.z);
    const F8 b = n.x * n.y * a;
    s = {1.0F + sign * n.x * n.x * a, sign * b, -sign * n.x};
    t = {b, sign + n.y * n.y * a, -n.y};
}

/// A direction about n with density cos / pi.
NEMRA_INLINE Vec8 cosineDirection(F8 u, F8 v, Vec8 n, F8& cosine) {
    F8 x, y;
    toDisc(u, v, x, y);
    cosine = squareRoot(larger(1.0F - x * x - y * y, splat(0.0F)));
    Vec8 s, t;
    frame(n, s, t);
    return s * x + t * y + n * cosine;
}

}  // namespace nemra::core::NEMRA_KERNEL
