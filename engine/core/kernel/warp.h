/// From the unit square to discs and directions.
#pragma once

#include "engine/core/kernel/simd.h"

namespace nemra::core::NEMRA_KERNEL {

/// Unit square to unit disc, area preserving, neighbours stay neighbours (Shirley and Chiu, 1997).
NEMRA_INLINE void toDisc(FloatN u, FloatN v, FloatN& x, FloatN& y) {
    const FloatN a = u * 2.0F - 1.0F;
    const FloatN b = v * 2.0F - 1.0F;
    const IntN wide = magnitude(a) > magnitude(b);
    const FloatN r = select(wide, a, b);
    const FloatN other = select(wide, b, a);
    const FloatN ratio = select(r != 0.0F, other / r, splat(0.0F));
    // Taylor series on [-pi/4, pi/4]; the last terms left out are below 2e-8.
    const FloatN t = ratio * 0.785398163397448310F;
    const FloatN q = t * t;
    const FloatN s = t * (1.0F + q * (-1.0F / 6.0F + q * (1.0F / 120.0F + q * (-1.0F / 5040.0F + q * (1.0F / 362880.0F)))));
    const FloatN c = 1.0F + q * (-0.5F + q * (1.0F / 24.0F + q * (-1.0F / 720.0F + q * (1.0F / 40320.0F))));
    x = r * select(wide, c, s);
    y = r * select(wide, s, c);
}

/// Two unit vectors that make a right-handed frame with n (Duff et al., "Building an Orthonormal Basis, Revisited", JCGT 6(1),
/// 2017).
NEMRA_INLINE void frame(VecN n, VecN& s, VecN& t) {
    const FloatN sign = flipSign(splat(1.0F), n.z);
    const FloatN a = -1.0F / (sign + n.z);
    const FloatN b = n.x * n.y * a;
    s = {1.0F + sign * n.x * n.x * a, sign * b, -sign * n.x};
    t = {b, sign + n.y * n.y * a, -n.y};
}

/// A direction about n with density cos / pi.
NEMRA_INLINE VecN cosineDirection(FloatN u, FloatN v, VecN n, FloatN& cosine) {
    FloatN x, y;
    toDisc(u, v, x, y);
    cosine = squareRoot(larger(1.0F - x * x - y * y, splat(0.0F)));
    VecN s, t;
    frame(n, s, t);
    return s * x + t * y + n * cosine;
}

}  // namespace nemra::core::NEMRA_KERNEL
