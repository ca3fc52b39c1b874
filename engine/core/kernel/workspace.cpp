#include "engine/core/kernel/workspace.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace nemra::core {

namespace {

/// Hands out aligned pieces of one block; with no block it only counts.
class Carver {
public:
    explicit Carver(std::byte* block) : block_(block) {}
    template <class T>
    void take(T*& array, std::size_t count) {
        array = block_ ? reinterpret_cast<T*>(block_ + used_) : nullptr;
        used_ += (count * sizeof(T) + 63) / 64 * 64;
    }
    std::size_t used() const noexcept { return used_; }

private:
    std::byte* block_;
    std::size_t used_ = 0;
};

std::size_t layOut(Workspace& w, std::byte* block, int wavelengths) {
    constexpr std::size_t n = kBatchPaths + 16;  // kernels run over whole groups of lanes
    const std::size_t spectral = n * wavelengths;
    Carver carver(block);
    for (float** a : {&w.throughput, &w.radiance, &w.pending, &w.inCell, &w.weight}) carver.take(*a, spectral);
    carver.take(w.cell, spectral);
    carver.take(w.firstDistance, n);
    carver.take(w.reversed, n);
    carver.take(w.pixel, n);
    for (RayArrays& r : w.rays) {
        for (float** a : {&r.ox, &r.oy, &r.oz, &r.dx, &r.dy, &r.dz, &r.pdf}) carver.take(*a, n);
        carver.take(r.slot, n);
        carver.take(r.bounce, n);
    }
    for (float** a : {&w.hitT, &w.hitU, &w.hitV}) carver.take(*a, n);
    carver.take(w.hit, n);
    carver.take(w.hitInner, n);
    for (float** a :
         {&w.px,     &w.py,     &w.pz,       &w.gx,       &w.gy,      &w.gz,        &w.nx,  &w.ny,  &w.nz,  &w.offset,
          &w.uLight, &w.vLight, &w.uScatter, &w.vScatter, &w.uChoice, &w.uRoulette, &w.sx,  &w.sy,  &w.sz,  &w.shadowWeight,
          &w.wx,     &w.wy,     &w.wz,       &w.wPdf,     &w.qox,     &w.qoy,       &w.qoz, &w.qdx, &w.qdy, &w.qdz}) {
        carver.take(*a, n);
    }
    for (std::int32_t** a : {&w.vertexSlot, &w.vertexSurface, &w.lightEmission, &w.shadowSlot}) carver.take(*a, n);
    for (std::uint32_t** a : {&w.vertexBounce, &w.vertexReversed, &w.vertexPixel}) carver.take(*a, n);
    carver.take(w.blocked, n);
    return carver.used();
}

constexpr std::size_t kHead = (sizeof(Workspace) + 63) / 64 * 64;

}  // namespace

std::size_t workspaceBytes(int wavelengths) noexcept {
    Workspace w{};
    return kHead + layOut(w, nullptr, wavelengths);
}

Workspace* makeWorkspace(int wavelengths) {
    const std::size_t bytes = workspaceBytes(wavelengths);
    auto* block = static_cast<std::byte*>(std::aligned_alloc(64, bytes));
    if (!block) throw std::bad_alloc();
    std::memset(block, 0, bytes);  // lanes beyond the last path compute too: on zeros, not on what lay there
    auto* w = new (block) Workspace{};
    layOut(*w, block + kHead, wavelengths);
    return w;
}

void freeWorkspace(Workspace* workspace) noexcept { std::free(workspace); }

}  // namespace nemra::core
