#include "render/renderer_docs.h"

namespace Nemra::rendererDocs {

namespace {

/// Cross-reference to a method or enumerator of Renderer.
std::string reference(const std::string& packageName, const char* member) {
    return ":meth:`" + packageName + ".nemra.Renderer." + member + "`";
}

std::string nodesTakeEffect(const std::string& packageName) {
    return "Does not impact ongoing render. Will take effect at " + reference(packageName, "start") + ".";
}

std::string parameterNote(const std::string& packageName) {
    return ".. note::\n\n    setParameter must be used before " + reference(packageName, "addLocalNode") + " and " +
           reference(packageName, "addRemoteNode") + " to take effect\n";
}

}  // namespace

std::string classDoc(const std::string& packageName) {
    return R"(Create a Renderer object

.. code-block:: python

    import time

    from )" +
           packageName + R"( import SVLIB_PATH, examples
    from )" +
           packageName + R"( import nemra

    finished = False

    renderer = nemra.Renderer()
    renderer.setParameter("num_threads", 4)
    renderer.setParameter("library_paths", SVLIB_PATH)
    renderer.setHaltCondition(time=0, spp=25, action=nemra.Renderer.halt_cond.stops)
    renderer.addLocalNode()

    def onFinish(raw):
        global finished
        raw.writeAuto("cornellbox.png")
        finished = True

    renderer.onFinish(onFinish)
    renderer.start(examples["cornellbox"])

    while not finished:
        time.sleep(2)

Please refer to :ref:`tuto-network-rendering` for a more detailed usage.)";
}

std::string haltConditionEnumDoc(const std::string& packageName) {
    return "Enumerator of actions to performed when halt condition (time, spp) has been reached\n\n.. note::\n\n"
           "    Each action triggers the " +
           reference(packageName, "onFinish") + " call back even if using nochange action.\n";
}

std::string setTextParameterDoc(const std::string& packageName) {
    return R"(Sets a renderer parameter

Supported parameters: (list may not be up to date)

- "library_paths" : semicolon separated list of path to get svlibs from (for local renderers only)
- "setup" : the name of the setup to render in scene file
- "output_file_name" : path to final render saved file. Extension may be omitted or ".auto" to let nemra choose one
- "local_remote_server" : instead of connecting to a remote server, creates a local server and connects to it (see )" +
           reference(packageName, "addRemoteNode") + R"()
- "output_raw" : "true" or "false", save final render to raw instead of using output node
- "remote_host" : address of nemra server to connect to
- "resume" : "true" or "false", goes on from the svraw file of an earlier render of the same scene if there is one, and saves such a file
  while rendering; needs "output_raw" and "output_file_name". The result is that of a render that was not interrupted
- "save_interval" : seconds between the files that a render with "resume" saves, "60" by default, "0" for the last one only
- "adaptive" : "true" or "false", more samples where the picture is noisy; the halt condition's spp is then the mean. Not with "resume"
- "halt_noise" : relative standard error of the picture at which the halt condition's action is taken, for instance "0.01";
  "0", the default, for none

)" + parameterNote(packageName) +
           R"(
.. code-block:: python

    from )" +
           packageName + R"( import SVLIB_PATH
    from )" +
           packageName + R"( import nemra

    renderer = nemra.Renderer()
    renderer.setParameter("library_paths", SVLIB_PATH)
)";
}

std::string setIntParameterDoc(const std::string& packageName) {
    return R"(Sets a renderer parameter

Supported parameters: (list may not be up to date)

- "num_threads" : number of simulation threads (for local renderers only)

)" + parameterNote(packageName) +
           R"(
.. code-block:: python

    from )" +
           packageName + R"( import nemra

    renderer = nemra.Renderer()
    renderer.setParameter("num_threads", 4)
)";
}

std::string clearNodesDoc(const std::string& packageName) {
    return "Removes all render nodes\n\n" + nodesTakeEffect(packageName);
}

std::string addLocalNodeDoc(const std::string& packageName) {
    return "Adds a local render node\n\n" + nodesTakeEffect(packageName) + "\n\nMultiple local renderers can be used together";
}

std::string addRemoteNodeDoc(const std::string& packageName) {
    return "Adds a remote renderer\n\n" + nodesTakeEffect(packageName) +
           "\n\nIt is requiered to previously set \"remote_host\" parameter using " + reference(packageName, "setParameter");
}

std::string updateRawDoc(const std::string& packageName) {
    return "Forces an update of the intermediate result\n\nWill likely trigger an update callback set with " +
           reference(packageName, "onUpdate");
}

std::string getStatisticDoc(const std::string& packageName) {
    return "Gets statistic values (spp, sps...).\n\nTo avoid polling these values, set a notifier callback with " +
           reference(packageName, "onStatisticsUpdate");
}

std::string onChangeDoc(const std::string& packageName) {
    return "Sets a state changed callback.\n\n"
           "Removing the previous one if any.  The callback notifies when the renderer state changes between : "
           "Idle, Running, Paused, Stopping.\n\n"
           "Look at " +
           reference(packageName, "state") + " for the states list.";
}

std::string onStatisticsUpdateDoc(const std::string& packageName) {
    return "Sets a render statistics callback\n\n"
           "Removing the previous one if any.\n\n"
           "The callback notifies periodycally with render performance statistics change.\n\n"
           "It does not pass statistics values, only notifies that they have been updated\n\n"
           "Use " +
           reference(packageName, "getStatistic") + " to get values.";
}

std::string onMessageDoc(const std::string& packageName) {
    return "Sets a render message callback\n\n"
           "Removing the previous one if any.\n\n"
           "The callback notifies with log messages.\n\n"
           "- First callback string parameter is the node path who emitted the message\n"
           "- Second callback stringdoc parameter is the message itself\n"
           "- Third parameter is the message level (see :meth:`" +
           packageName + "nemra.main.messageType`";
}

}  // namespace Nemra::rendererDocs
