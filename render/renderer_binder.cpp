#include "module/binders.h"
#include "module/bound_class.h"
#include "render/renderer.h"
#include "render/renderer_docs.h"

namespace Nemra {

namespace {

using RendererClass = Nemra::BoundClass<NemraRenderer, CHandler<nemra_renderer_t>, std::shared_ptr<NemraRenderer>>;

void bindEnumerators(const RendererClass& renderer, const std::string& packageName) {
    py::enum_<nemra_renderer_stat_t>(renderer, "stat_type", py::arithmetic(), "Enumerator of statistic value types")
        .value("time", NEMRA_STAT_TIME, "Elapsed rendering time")
        .value("samples", NEMRA_STAT_SAMPLES, "Number of samples")
        .value("spp", NEMRA_STAT_SPP, "Samples per pixel")
        .value("spsaverage", NEMRA_STAT_SPS_AVERAGE, "Average samples per second")
        .value("spscurrent", NEMRA_STAT_SPS_CURRENT, "Current samples per second")
        .value("wrongrate", NEMRA_STAT_WRONG_RATE, "Number of wrong (nan, inf, ...) samples per second")
        .value("halttime", NEMRA_STAT_HALT_TIME, "Halt time condition")
        .value("haltspp", NEMRA_STAT_HALT_SPP, "Halt sample per pixel condition")
        .export_values();
    py::enum_<NemraRendererState_t>(renderer, "state", py::arithmetic(), "state of the renderer")
        .value("idle", NEMRA_RENDERER_IDLE)
        .value("running", NEMRA_RENDERER_RUNNING)
        .value("paused", NEMRA_RENDERER_PAUSED)
        .value("stopping", NEMRA_RENDERER_STOPPING)
        .export_values();
    py::enum_<nemra_renderer_halt_cond_t>(renderer, "halt_cond", py::arithmetic(),
                                          rendererDocs::haltConditionEnumDoc(packageName).c_str())
        .value("pauses", NEMRA_HALT_PAUSES)
        .value("stops", NEMRA_HALT_STOPS)
        .value("nochange", NEMRA_HALT_NOCHANGE)
        .export_values();
}

void bindControl(RendererClass& renderer, const std::string& packageName) {
    using namespace rendererDocs;
    renderer.def(py::init<>())
        .def("stop", &NemraRenderer::stop, kStop)
        .def("setParameter", &NemraRenderer::setParameter, py::arg("name"), py::arg("value"),
             setTextParameterDoc(packageName).c_str())
        .def("setParameter", &NemraRenderer::setParameterInt, py::arg("name"), py::arg("value"),
             setIntParameterDoc(packageName).c_str())
        .def("setHaltCondition", &NemraRenderer::setHaltCondition, py::arg("time"), py::arg("spp"), py::arg("action"),
             kSetHaltCondition)
        .def("togglePause", &NemraRenderer::togglePause, py::arg("paused"), kTogglePause)
        .def("clearNodes", &NemraRenderer::clearNodes, clearNodesDoc(packageName).c_str())
        .def("addLocalNode", &NemraRenderer::addLocalNode, addLocalNodeDoc(packageName).c_str())
        .def("addRemoteNode", &NemraRenderer::addRemoteNode, addRemoteNodeDoc(packageName).c_str())
        .def("start", &NemraRenderer::start, py::arg("file_name"), kStart)
        .def("startData", &NemraRenderer::startData, py::arg("data"), py::arg("size"), kStartData)
        .def("updateRaw", &NemraRenderer::updateRaw, updateRawDoc(packageName).c_str())
        .def("getStatistic", &NemraRenderer::getStatistic, py::arg("type"), getStatisticDoc(packageName).c_str());
}

void bindCallbacks(RendererClass& renderer, const std::string& packageName) {
    using namespace rendererDocs;
    renderer.def("onChange", &NemraRenderer::onChange, py::arg("call_back"), onChangeDoc(packageName).c_str())
        .def("onUpdate", &NemraRenderer::onUpdate, py::arg("call_back"), kOnUpdate)
        .def("onFinish", &NemraRenderer::onFinish, py::arg("call_back"), kOnFinish)
        .def("onStatisticsUpdate", &NemraRenderer::onStatisticsUpdate, py::arg("call_back"),
             onStatisticsUpdateDoc(packageName).c_str())
        .def("onMessage", &NemraRenderer::onMessage, py::arg("call_back"), onMessageDoc(packageName).c_str());
}

}  // namespace

void bindRenderer(py::module_& module, const std::string& packageName) {
    py::class_<CHandler<nemra_renderer_t>, std::shared_ptr<CHandler<nemra_renderer_t>>>(module, "CRendererHandler");
    RendererClass renderer(module, "Renderer");
    bindEnumerators(renderer, packageName);
    bindControl(renderer, packageName);
    bindCallbacks(renderer, packageName);
    renderer.doc() = rendererDocs::classDoc(packageName);
}

}  // namespace Nemra
