/// Where the last result of a render goes: decided before the render starts, so that a name that can't be had isn't found out at
/// its end.
#pragma once

#include <memory>
#include <string>

#include "engine/node/node.h"

namespace nemra::core {

struct FinalFile {
    std::string path;
    std::string warning;  ///< why the extension isn't the wanted one, "" if it is
};

/// The name of the file for a wanted one. An extension that is a format is kept; where this result isn't written in it, another
/// one takes its place, with a warning. What is no format is a part of the name, and an extension is added; ".auto" and points at
/// the end give way to it. `output` may be null.
FinalFile finalFile(const std::string& wanted, bool asRaw, const node::Node* output);

/// Puts that name into `path`. Warnings are said here, and what would keep the file from being written is, too: then false.
bool settleFinalFile(std::string& path, bool asRaw, const node::Node* output);

}  // namespace nemra::core
