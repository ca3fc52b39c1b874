// Target: the readers of mesh files, told from the bytes; what has no mark is read as OBJ.
#include "engine/node/import/read_mesh_file.h"
#include "engine/node/mesh.h"
#include "tests/fuzz/read_and_write.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace nemra;
    int errors = 0;
    const log::Capture capture([&](const log::Message& message) { errors += message.level == NEMRA_LOG_ERROR; });
    node::MeshParts read;
    node::MeshFrame frame;
    if (size % 2 == 1) frame = {node::LengthUnit::mm, node::UpAxis::z};
    // The name makes OBJ of what is nothing else; files beside it aren't there.
    const bool isRead = node::readMeshFile({reinterpret_cast<const char*>(data), size}, "/nosuch/fuzz.obj", frame, read);
    fuzz::demand(errors == (isRead ? 0 : 1), "a refusal has one error, success none");
    for (const node::MeshPart& part : read.parts) {
        fuzz::demand(!part.name.empty() && !part.mesh.triangles.empty(), "a part without name or triangles");
        fuzz::demand(node::whyRefused(part.mesh).empty(), "a part isn't sound");
    }
    for (const node::PartPlacing& placing : read.placings) fuzz::demand(placing.part < read.parts.size(), "a part isn't there");
    return 0;
}
