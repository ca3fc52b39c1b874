// nemraRaw*: results, except their files (raw_files.cpp).
#include <algorithm>
#include <memory>
#include <string>

#include "engine/common/guarded.h"
#include "engine/common/slot_table.h"
#include "engine/common/text.h"
#include "engine/core/api/raw_handle.h"
#include "engine/core/glare/rating.h"
#include "engine/core/output/table_titles.h"
#include "module/flat/nemra_raw.h"

using namespace nemra;
using core::ChannelKind;
using core::LightView;
using core::Raw;

namespace {

/// The view that this thread read from last. It stays whole while a newer result takes the handle's place elsewhere, so a reader
/// that has asked for the size gets all pixels of one and the same result.
struct HotView {
    const nemra_raw_t* handle;
    const LightView* view;
    std::uint64_t epoch;
};
/// The library is loaded before the threads that read, so its thread-local storage can be reached without a call.
[[gnu::tls_model("initial-exec")]] constinit thread_local HotView hot{nullptr, nullptr, 0};
thread_local std::shared_ptr<const LightView> hotOwner;  ///< apart, so that reading `hot` needs no check of its construction

/// Looks the handle up anew. Kept out of line: its frame would cost each of the millions of calls that don't need it.
[[gnu::noinline, gnu::cold]] double lightQuantity(nemra_raw_t* handle, int channel, int x, int y, int quantity) {
    return guarded("nemraRawGetLightQuantity", 0.0, [&] {
        const std::uint64_t epoch = core::rawEpoch().load(std::memory_order_acquire);
        const auto raw = find<Raw>(handle);
        if (!raw) {
            hot = {};
            hotOwner.reset();
            return 0.0;
        }
        hotOwner = raw->view();
        hot = {handle, hotOwner.get(), epoch};
        return hot.view->at(channel, x, y, quantity);
    });
}

template <class Result, class Body>
Result with(const char* function, nemra_raw_t* handle, Result fallback, Body&& body) {
    return guarded<Result>(function, fallback, [&]() -> Result {
        const Raw* const raw = core::keptRaw(handle);
        return raw ? body(*raw) : fallback;
    });
}

/// Channels and, behind them, meta channels.
bool isChannel(const core::Film& film, int index) { return index >= 0 && static_cast<std::size_t>(index) < film.channels.size(); }

bool isKind(const char* function, nemra_raw_t* raw, int index, ChannelKind kind) {
    return with(function, raw, false, [&](const Raw& r) {
        const auto film = r.film();
        return isChannel(*film, index) && film->channels[static_cast<std::size_t>(index)].kind == kind;
    });
}

const char* responseName(ChannelKind kind) {
    switch (kind) {
        case ChannelKind::energy:
            return "energy";
        case ChannelKind::luminous:
            return "luminous";
        case ChannelKind::spectral:
            return "spectral";
        case ChannelKind::unknown:
            break;
    }
    return "unknown";
}

/// A text for the caller to copy: good until this thread's next call of the kind.
const char* passing(std::string text) {
    static thread_local std::string kept;
    kept = std::move(text);
    return kept.c_str();
}

}  // namespace

extern "C" {

nemra_raw_t* nemraRawCopy(nemra_raw_t* raw) {
    return guarded<nemra_raw_t*>("nemraRawCopy", nullptr, [&]() -> nemra_raw_t* {
        const auto original = find<Raw>(raw);
        if (!original) return nullptr;
        original->makePageable();  // here, so that further copies share it
        return publish<nemra_raw_t>(std::make_shared<Raw>(*original));
    });
}

void nemraRawRelease(nemra_raw_t** handle) {
    guarded("nemraRawRelease", [&] {
        if (retire(handle)) core::rawChanged();
    });
}

int nemraRawWidth(nemra_raw_t* raw) {
    return with("nemraRawWidth", raw, 0, [&](const Raw& r) {
        if (hot.handle == raw) hot = {};  // a reader begins anew
        return r.width();
    });
}

int nemraRawHeight(nemra_raw_t* raw) {
    return with("nemraRawHeight", raw, 0, [](const Raw& r) { return r.height(); });
}

int nemraRawChannelCount(nemra_raw_t* raw) {
    return with("nemraRawChannelCount", raw, 0, [](const Raw& r) { return static_cast<int>(r.film()->channels.size()); });
}

double nemraRawRenderTime(nemra_raw_t* raw) {
    return with("nemraRawRenderTime", raw, 0.0, [](const Raw& r) { return r.counts().time; });
}

double nemraRawSPS(nemra_raw_t* raw) {
    return with("nemraRawSPS", raw, 0.0, [](const Raw& r) {
        const core::RenderCounts counts = r.counts();
        return counts.time > 0.0 ? static_cast<double>(counts.samples) / counts.time : 0.0;
    });
}

double nemraRawSPP(nemra_raw_t* raw) {
    return with("nemraRawSPP", raw, 0.0, [](const Raw& r) { return r.spp(); });
}

bool nemraRawIsDraft(nemra_raw_t* raw) {
    return with("nemraRawIsDraft", raw, false, [](const Raw& r) { return r.isDraft(); });
}

bool nemraRawHasChannel(nemra_raw_t* raw, const char* name) {
    return with("nemraRawHasChannel", raw, false, [&](const Raw& r) {
        const int index = r.channelIndex(viewOf(name));
        return index >= 0 && isChannel(*r.film(), index);
    });
}

bool nemraRawHasMetaChannel(nemra_raw_t* raw, const char* name) {
    return with("nemraRawHasMetaChannel", raw, false, [&](const Raw& r) { return r.hasMetaChannel(viewOf(name)); });
}

int nemraRawChannelIndex(nemra_raw_t* raw, const char* name) {
    return with("nemraRawChannelIndex", raw, -1, [&](const Raw& r) { return r.channelIndex(viewOf(name)); });
}

const char* nemraRawChannelName(nemra_raw_t* raw, int index) {
    return with<const char*>("nemraRawChannelName", raw, nullptr, [&](const Raw& r) -> const char* {
        const auto film = r.film();
        if (isChannel(*film, index)) return passing(film->channels[static_cast<std::size_t>(index)].name);
        if (index < 0) return nullptr;
        const auto meta = static_cast<std::size_t>(index) - film->channels.size();
        if (meta >= core::kMetaChannelNames.size() || !r.hasMetaChannel(core::kMetaChannelNames[meta])) return nullptr;
        return core::kMetaChannelNames[meta];
    });
}

const char* nemraRawChannelResponse(nemra_raw_t* raw, int index) {
    return with<const char*>("nemraRawChannelResponse", raw, nullptr, [&](const Raw& r) -> const char* {
        const auto film = r.film();
        if (isChannel(*film, index)) return responseName(film->channels[static_cast<std::size_t>(index)].kind);
        return nemraRawChannelName(raw, index) ? responseName(ChannelKind::unknown) : nullptr;
    });
}

bool nemraRawIsChannelLuminous(nemra_raw_t* raw, int index) {
    return isKind("nemraRawIsChannelLuminous", raw, index, ChannelKind::luminous);
}
bool nemraRawIsChannelEnergy(nemra_raw_t* raw, int index) {
    return isKind("nemraRawIsChannelEnergy", raw, index, ChannelKind::energy);
}
bool nemraRawIsChannelSpectral(nemra_raw_t* raw, int index) {
    return isKind("nemraRawIsChannelSpectral", raw, index, ChannelKind::spectral);
}

double nemraRawChannelWavelength(nemra_raw_t* raw, int index) {
    return with("nemraRawChannelWavelength", raw, 0.0, [&](const Raw& r) {
        const auto film = r.film();
        if (!isChannel(*film, index)) return 0.0;
        const core::Channel& channel = film->channels[static_cast<std::size_t>(index)];
        return channel.kind == ChannelKind::spectral ? channel.wavelength : 0.0;
    });
}

double nemraRawGetAutoRangeValue(nemra_raw_t* raw) {
    return with("nemraRawGetAutoRangeValue", raw, 0.0, [](const Raw& r) { return r.autoRangeValue(); });
}

double nemraRawGetUGR(nemra_raw_t* raw, int x1, int y1, int x2, int y2) {
    return with("nemraRawGetUGR", raw, 0.0, [&](const Raw& r) { return core::unifiedGlareRating(r, {x1, y1, x2, y2}); });
}

double nemraRawGetLightQuantity(nemra_raw_t* raw, int channel, int x, int y, int quantity) {
    if (hot.handle == raw && hot.view && hot.epoch == core::rawEpoch().load(std::memory_order_relaxed)) [[likely]] {
        return hot.view->at(channel, x, y, quantity);
    }
    return lightQuantity(raw, channel, x, y, quantity);
}

int nemraRawGetQuantityCount(nemra_raw_t* raw) {
    return with("nemraRawGetQuantityCount", raw, 0, [](const Raw& r) { return static_cast<int>(r.quantities().size()); });
}

nemra_quantity_t nemraRawGetQuantity(nemra_raw_t* raw, int index) {
    return with("nemraRawGetQuantity", raw, NEMRA_QUANTITY_RAW, [&](const Raw& r) {
        const auto& all = r.quantities();
        return index >= 0 && static_cast<std::size_t>(index) < all.size() ? all[static_cast<std::size_t>(index)]
                                                                          : NEMRA_QUANTITY_RAW;
    });
}

void nemraRawGenerateSNR(nemra_raw_t* raw) {
    guarded("nemraRawGenerateSNR", [&] {
        if (const auto known = find<Raw>(raw)) {
            known->generateSnr();
            core::rawChanged();
        }
    });
}

const char* nemraRawGetInstrumentName(nemra_raw_t* raw) {
    return with<const char*>("nemraRawGetInstrumentName", raw, nullptr, [](const Raw& r) -> const char* {
        const auto instrument = r.instrument();
        return instrument ? passing(instrument->name()) : nullptr;
    });
}

const char* nemraRawGetInstrumentOutput(nemra_raw_t* raw, int index) {
    return with<const char*>("nemraRawGetInstrumentOutput", raw, nullptr, [&](const Raw& r) -> const char* {
        const auto outputs = r.outputs();
        return index >= 0 && static_cast<std::size_t>(index) < outputs.size()
                   ? passing(outputs[static_cast<std::size_t>(index)]->name())
                   : nullptr;
    });
}

const char* nemraRawGetOutputName(nemra_raw_t* raw) {
    return with<const char*>("nemraRawGetOutputName", raw, nullptr, [](const Raw& r) -> const char* {
        const auto output = r.output();
        return output ? passing(output->name()) : nullptr;
    });
}

const char* nemraRawGetXHeaderName(nemra_raw_t* raw, int x) {
    return with<const char*>("nemraRawGetXHeaderName", raw, nullptr, [&](const Raw& r) -> const char* {
        return x >= 0 && x < r.width() ? passing(core::TableTitles(r).column(x)) : nullptr;
    });
}

const char* nemraRawGetYHeaderName(nemra_raw_t* raw, int y) {
    return with<const char*>("nemraRawGetYHeaderName", raw, nullptr, [&](const Raw& r) -> const char* {
        return y >= 0 && y < r.height() ? passing(core::TableTitles(r).row(y)) : nullptr;
    });
}

bool nemraRawIsCompatible(nemra_raw_t* raw, nemra_raw_t* other) {
    return guarded("nemraRawIsCompatible", false, [&] {
        const auto a = find<Raw>(raw);
        const auto b = find<Raw>(other);
        return a && b && a->isCompatible(*b);
    });
}

bool nemraRawAdd(nemra_raw_t* raw, nemra_raw_t* other) {
    return guarded("nemraRawAdd", false, [&] {
        const auto a = find<Raw>(raw);
        const auto b = find<Raw>(other);
        if (!a || !b) return false;
        const bool added = a->add(*b);
        core::rawChanged();
        if (!added) log::error("nemraRawAdd", "the results differ in size or channels");
        return added;
    });
}

void nemraRawRemoveChannels(nemra_raw_t* raw) {
    guarded("nemraRawRemoveChannels", [&] {
        if (const auto known = find<Raw>(raw)) {
            known->removeChannels();
            core::rawChanged();
        }
    });
}

}  // extern "C"
