/// Docstrings of `Renderer`. Most refer to other methods by the package's name.
#pragma once

#include <string>

namespace Nemra::rendererDocs {

std::string classDoc(const std::string& packageName);
std::string haltConditionEnumDoc(const std::string& packageName);
std::string setTextParameterDoc(const std::string& packageName);
std::string setIntParameterDoc(const std::string& packageName);
std::string clearNodesDoc(const std::string& packageName);
std::string addLocalNodeDoc(const std::string& packageName);
std::string addRemoteNodeDoc(const std::string& packageName);
std::string updateRawDoc(const std::string& packageName);
std::string getStatisticDoc(const std::string& packageName);
std::string onChangeDoc(const std::string& packageName);
std::string onStatisticsUpdateDoc(const std::string& packageName);
std::string onMessageDoc(const std::string& packageName);

inline constexpr const char* kStop = R"(Stops this renderer

Does nothing if no rendering is in progress.)";

inline constexpr const char* kSetHaltCondition = R"(Sets the halt condition

- time : halt time in seconds. Zero or negative value disables time halt condition
- spp : sample per pixes. Zero or negative value disables spp halt condition
- action : changes if halt stops or pauses render (or doesn't change it)

This can be called before or during a render.)";

inline constexpr const char* kTogglePause = R"(Pauses/unpauses a render

Returns false if resuming is not possible.)";

inline constexpr const char* kStart = R"(Start render from file

File name must be relative to working directory for network rendering.

Returns false if starting is not possible)";

inline constexpr const char* kStartData = R"(Start render from an svxml or svbin buffer

Returns false if starting is not possible)";

inline constexpr const char* kOnUpdate = R"(Sets an update callback

Removing the previous one if any.

The callback notifies intermediate render results, passing a raw image.)";

inline constexpr const char* kOnFinish = R"(Sets a render finished callback

Removing the previous one if any.

The callback notifies that render is finished passing a raw image.)";

}  // namespace Nemra::rendererDocs
