// Functions of the flat interface that later work brings. Each answers "empty" and says so in the log.
#include "engine/common/log.h"
#include "module/flat/nemra_global.h"
#include "module/flat/nemra_raw.h"
#include "module/flat/nemra_renderer.h"
#include "module/flat/nemra_server.h"

namespace {

void notAvailable(const char* function) { nemra::log::warning(function, "not available yet"); }

}  // namespace

extern "C" {

__attribute__((weak)) bool nemraGlobalInitialize(bool, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) const char* nemraGlobalGetVersionString() { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraGlobalGetWorkdir() { notAvailable(__func__); return ""; }
__attribute__((weak)) bool nemraGlobalSetWorkdir(const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) void addNemraLogMessageCallbackSink(nemra_log_callback, void*, const char*) { notAvailable(__func__); }
__attribute__((weak)) char* pyNemraGlobalListOpenCLDevices() { notAvailable(__func__); return nullptr; }
__attribute__((weak)) bool nemraGlobalCloseCallbacks(int) { notAvailable(__func__); return false; }
__attribute__((weak)) nemra_raw_t* nemraRawCopy(nemra_raw_t*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_raw_t* nemraRawReadSvraw(const char*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_raw_t* nemraRawReadOpenExr(const char*) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) nemra_raw_t* nemraRawFromImageNode(const char*, int64_t) { notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraRawRelease(nemra_raw_t**) { notAvailable(__func__); }
__attribute__((weak)) int nemraRawWidth(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) int nemraRawHeight(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) int nemraRawChannelCount(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) double nemraRawRenderTime(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) double nemraRawSPS(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) double nemraRawSPP(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) bool nemraRawIsDraft(nemra_raw_t*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRawHasChannel(nemra_raw_t*, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRawHasMetaChannel(nemra_raw_t*, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) int nemraRawChannelIndex(nemra_raw_t*, const char*) { notAvailable(__func__); return 0; }
__attribute__((weak)) const char* nemraRawChannelName(nemra_raw_t*, int) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraRawChannelResponse(nemra_raw_t*, int) { notAvailable(__func__); return ""; }
__attribute__((weak)) bool nemraRawIsChannelLuminous(nemra_raw_t*, int) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRawIsChannelEnergy(nemra_raw_t*, int) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRawIsChannelSpectral(nemra_raw_t*, int) { notAvailable(__func__); return false; }
__attribute__((weak)) double nemraRawChannelWavelength(nemra_raw_t*, int) { notAvailable(__func__); return 0; }
__attribute__((weak)) double nemraRawGetAutoRangeValue(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) double nemraRawGetUGR(nemra_raw_t*, int, int, int, int) { notAvailable(__func__); return 0; }
__attribute__((weak)) double nemraRawGetLightQuantity(nemra_raw_t*, int, int, int, int) { notAvailable(__func__); return 0; }
__attribute__((weak)) int nemraRawGetQuantityCount(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) nemra_quantity_t nemraRawGetQuantity(nemra_raw_t*, int) { notAvailable(__func__); return NEMRA_QUANTITY_RAW; }
__attribute__((weak)) void nemraRawGenerateSNR(nemra_raw_t*) { notAvailable(__func__); }
__attribute__((weak)) const char* nemraRawGetInstrumentName(nemra_raw_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraRawGetInstrumentOutput(nemra_raw_t*, int) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraRawGetOutputName(nemra_raw_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraRawGetXHeaderName(nemra_raw_t*, int) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraRawGetYHeaderName(nemra_raw_t*, int) { notAvailable(__func__); return ""; }
__attribute__((weak)) int nemraRawGetOutputFormatSize(nemra_raw_t*) { notAvailable(__func__); return 0; }
__attribute__((weak)) const char* nemraRawGetOutputFormat(nemra_raw_t*, int) { notAvailable(__func__); return ""; }
__attribute__((weak)) const char* nemraRawGetDefaultFormat(nemra_raw_t*) { notAvailable(__func__); return ""; }
__attribute__((weak)) int nemraRawImportOutput(nemra_raw_t*, nemra_raw_t*, const char*) { notAvailable(__func__); return 0; }
__attribute__((weak)) int nemraRawWriteResult(nemra_raw_t*, const char*, const char*) { notAvailable(__func__); return 0; }
__attribute__((weak)) int nemraRawWriteRaw(nemra_raw_t*, const char*, const char*) { notAvailable(__func__); return 0; }
__attribute__((weak)) int nemraRawWriteAuto(nemra_raw_t*, const char*) { notAvailable(__func__); return 0; }
__attribute__((weak)) char* nemraRawWriteResultBytes(nemra_raw_t*, uint32_t* size, const char*) { if (size) *size = 0; notAvailable(__func__); return nullptr; }
__attribute__((weak)) int nemraRawGetInstrument(nemra_raw_t*, void*, nemra_byte_sink) { notAvailable(__func__); return 0; }
__attribute__((weak)) int nemraRawGetOutput(nemra_raw_t*, void*, nemra_byte_sink) { notAvailable(__func__); return 0; }
__attribute__((weak)) bool nemraRawSetInstrument(nemra_raw_t*, const char*, int) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRawSetOutput(nemra_raw_t*, const char*, int) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRawIsCompatible(nemra_raw_t*, nemra_raw_t*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRawAdd(nemra_raw_t*, nemra_raw_t*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRawFilter(nemra_raw_t*, bool) { notAvailable(__func__); return false; }
__attribute__((weak)) void nemraRawRemoveChannels(nemra_raw_t*) { notAvailable(__func__); }
__attribute__((weak)) bool nemraRawGetImage8bitInfo(nemra_raw_t*, int*, int*, int*, int*) { notAvailable(__func__); return false; }
__attribute__((weak)) int nemraRawGetImage8bitProfile(nemra_raw_t*, void*, nemra_byte_sink) { notAvailable(__func__); return 0; }
__attribute__((weak)) nemra_renderer_t* nemraRendererCreate() { notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraRendererRelease(nemra_renderer_t**) { notAvailable(__func__); }
__attribute__((weak)) bool nemraRendererStart(nemra_renderer_t*, const char*) { notAvailable(__func__); return false; }
__attribute__((weak)) bool nemraRendererStartData(nemra_renderer_t*, const char*, unsigned int) { notAvailable(__func__); return false; }
__attribute__((weak)) void nemraRendererStop(nemra_renderer_t*) { notAvailable(__func__); }
__attribute__((weak)) bool nemraRendererTogglePause(nemra_renderer_t*, bool) { notAvailable(__func__); return false; }
__attribute__((weak)) void nemraRendererSetParameter(nemra_renderer_t*, const char*, const char*) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererSetParameterInt(nemra_renderer_t*, const char*, int) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererSetHaltCondition(nemra_renderer_t*, double, double, nemra_renderer_halt_cond_t) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererClearNodes(nemra_renderer_t*) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererAddLocalNode(nemra_renderer_t*) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererAddRemoteNode(nemra_renderer_t*) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererUpdateRaw(nemra_renderer_t*) { notAvailable(__func__); }
__attribute__((weak)) double nemraRendererGetStatistic(nemra_renderer_t*, nemra_renderer_stat_t) { notAvailable(__func__); return 0; }
__attribute__((weak)) void nemraRendererSetUpdateCallback(nemra_renderer_t*, void*, nemra_renderer_raw_callback) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererSetStateChangedCallback(nemra_renderer_t*, void*, nemra_renderer_state_callback) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererSetFinishedCallback(nemra_renderer_t*, void*, nemra_renderer_raw_callback) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererSetStatisticsCallback(nemra_renderer_t*, void*, nemra_renderer_statistics_callback) { notAvailable(__func__); }
__attribute__((weak)) void nemraRendererSetMessageCallback(nemra_renderer_t*, void*, nemra_renderer_message_callback) { notAvailable(__func__); }
__attribute__((weak)) nemra_server_t* nemraServerCreate() { notAvailable(__func__); return nullptr; }
__attribute__((weak)) void nemraServerRelease(nemra_server_t**) { notAvailable(__func__); }
__attribute__((weak)) void nemraServerOpenAsync(nemra_server_t*, int) { notAvailable(__func__); }
__attribute__((weak)) int nemraServerOpenBlocking(nemra_server_t*, int) { notAvailable(__func__); return 0; }
__attribute__((weak)) void nemraServerCloseBlocking(nemra_server_t*) { notAvailable(__func__); }
__attribute__((weak)) void nemraServerSetBusyChangedCallback(nemra_server_t*, void*, nemra_server_busy_callback) { notAvailable(__func__); }
__attribute__((weak)) void nemraServerSendMessage(nemra_server_t*, const char*, const char*, int) { notAvailable(__func__); }
__attribute__((weak)) void nemraServerSetParameter(nemra_server_t*, const char*, const char*) { notAvailable(__func__); }

}  // extern "C"
