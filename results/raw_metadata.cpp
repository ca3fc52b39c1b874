#include "results/raw.h"

namespace Nemra {

int NemraRaw::width() const { return nemraRawWidth(handle); }

int NemraRaw::height() const { return nemraRawHeight(handle); }

double NemraRaw::renderTime() const { return nemraRawRenderTime(handle); }

double NemraRaw::SPS() const { return nemraRawSPS(handle); }

double NemraRaw::SPP() const { return nemraRawSPP(handle); }

bool NemraRaw::isDraft() const { return nemraRawIsDraft(handle); }

int NemraRaw::channelCount() const { return nemraRawChannelCount(handle); }

bool NemraRaw::hasChannel(const std::string& name) const { return nemraRawHasChannel(handle, name.c_str()); }

bool NemraRaw::hasMetaChannel(const std::string& name) const { return nemraRawHasMetaChannel(handle, name.c_str()); }

std::string NemraRaw::channelName(int index) const { return nemraRawChannelName(handle, index); }

int NemraRaw::channelIndex(const std::string& name) const { return nemraRawChannelIndex(handle, name.c_str()); }

bool NemraRaw::isChannelLuminous(int index) const { return nemraRawIsChannelLuminous(handle, index); }

bool NemraRaw::isChannelEnergy(int index) const { return nemraRawIsChannelEnergy(handle, index); }

bool NemraRaw::isChannelSpectral(int index) const { return nemraRawIsChannelSpectral(handle, index); }

double NemraRaw::channelWavelength(int index) const { return nemraRawChannelWavelength(handle, index); }

const char* NemraRaw::channelResponse(int index) const { return nemraRawChannelResponse(handle, index); }

double NemraRaw::getAutoRangeValue() const { return nemraRawGetAutoRangeValue(handle); }

double NemraRaw::getUGR(int x1, int y1, int x2, int y2) const { return nemraRawGetUGR(handle, x1, y1, x2, y2); }

std::string NemraRaw::getInstrumentName() const { return nemraRawGetInstrumentName(handle); }

std::string NemraRaw::getInstrumentOutput(int index) const { return nemraRawGetInstrumentOutput(handle, index); }

std::string NemraRaw::getOutputName() const { return nemraRawGetOutputName(handle); }

double NemraRaw::getLightQuantity(int channel, int x, int y, Quantity quantity) const {
    return nemraRawGetLightQuantity(handle, channel, x, y, quantity);
}

std::string NemraRaw::getXHeaderName(int x) const { return nemraRawGetXHeaderName(handle, x); }

std::string NemraRaw::getYHeaderName(int y) const { return nemraRawGetYHeaderName(handle, y); }

int NemraRaw::getQuantityCount() const { return nemraRawGetQuantityCount(handle); }

Quantity NemraRaw::getQuantity(int index) const { return static_cast<Quantity>(nemraRawGetQuantity(handle, index)); }

}  // namespace Nemra
