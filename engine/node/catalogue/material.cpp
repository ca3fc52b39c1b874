#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/intlaw_parts.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

Parameter bounding() {
    return boolean("bounds_media", false)
        .doc("The surface parts two media: inner_medium behind it, outer_medium on the side of the normals");
}
ChildSpec innerMedium() { return child("inner_medium", "medium", "simple", "Medium behind the surface, if it bounds media"); }
ChildSpec outerMedium() {
    return child("outer_medium", "medium", "simple", "Medium on the side of the normals, if it bounds media");
}
ChildSpec materialChild(std::string name, std::string doc) {
    return child(std::move(name), "material", "generic", std::move(doc));
}

NodeClass genericClass() {
    return {.family = "material",
            .type = "generic",
            .summary = "Surface that scatters and may emit",
            .parameters = {bounding()},
            .children = {child("bsdf", "bsdf", "lambertian", "How the surface scatters light"),
                         child("emitter", "emitter", "lambertian", "What the surface emits; nothing by default"),
                         child("normal", "normalshader", "uniform", "Normal that light meets"),
                         scalarChild("opacity", 1.0, "Share of the area that is there, 0 to 1; light passes through the rest"),
                         innerMedium(), outerMedium()}};
}

NodeClass cloneClass() {
    const auto part = [](const char* name, const char* doc) { return boolean(name, false).doc(doc); };
    return {.family = "material",
            .type = "clone",
            .summary = "As another material, with some of its parts replaced",
            .parameters = {link("material").doc("Name of the material that is followed"),
                           part("replace_bsdf", "The child bsdf takes the place of the other material's"),
                           part("replace_emitter", "The child emitter takes the place of the other material's"),
                           part("replace_normal", "The child normal takes the place of the other material's"),
                           part("replace_opacity", "The child opacity takes the place of the other material's")},
            .children = {child("bsdf", "bsdf", "lambertian", "How the surface scatters light, if replaced"),
                         child("emitter", "emitter", "lambertian", "What the surface emits, if replaced"),
                         child("normal", "normalshader", "uniform", "Normal that light meets, if replaced"),
                         scalarChild("opacity", 1.0, "Share of the area that is there, if replaced")}};
}

NodeClass multiClass() {
    return {.family = "material",
            .type = "multi",
            .summary = "Several materials on one geometry; black where none is assigned",
            .parameters = {choice("assignment")
                               .option("shader", "The child selector gives the place in the list, rounded down")
                               .option("instance", "Instances take the materials of the list in turn")
                               .option("random", "Each instance takes one at random",
                                       {integer("seed", 0).pure().range(0, 2147483647).doc("Another seed gives another choice")})
                               .doc("Where which material lies")},
            .children = {scalarChild("selector", 0.0, "Place in the list, from 0, over the surface")},
            .listClass = "material"};
}

NodeClass axfClass() {
    return {.family = "material",
            .type = "axf-svbrdf",
            .summary = "Measured material that varies over the surface, from a file in the AxF format",
            .parameters = joined({choice("source")
                                      .option("file", "A file", {file("path").doc("File with the extension axf")})
                                      .option("embedded", "The bytes in the node itself")
                                      .doc("Where the measurement lies"),
                                  text("material_name").doc("Material within the file; empty takes the first"),
                                  boolean("real_size", true)
                                      .doc("The picture keeps the size that the file states; else it fills u and v from "
                                           "0 to 1"),
                                  boolean("clearcoat", true).doc("Use the layer of lacquer, if the file has one"),
                                  boolean("use_normals", true).doc("Use the measured normals"),
                                  boolean("use_opacity", true).doc("Use the measured coverage")},
                                 pictureMapping()),
            .rawSlots = {{"data", NEMRA_RAW_DATA_BINARY, "", "Bytes of the file, if they are embedded"}}};
}

NodeClass transmissionPolarizerClass() {
    return {.family = "material",
            .type = "idealtranspolarizer",
            .summary = "Ideal polarising sheet: passes light polarised along its axis and absorbs the rest (Malus 1809)",
            .parameters = {polarizationAxis()},
            .children = {spectrumChild("transmittance", 1.0, "Transmittance along the axis, 0 to 1")}};
}

NodeClass reflectionPolarizerClass() {
    return {.family = "material",
            .type = "idealreflpolarizer",
            .summary = "Ideal reflecting polariser, as of wires: passes light polarised along its axis and mirrors the rest",
            .parameters = {polarizationAxis()},
            .children = {spectrumChild("transmittance", 1.0, "Transmittance along the axis, 0 to 1"),
                         spectrumChild("reflectance", 1.0, "Reflectance across the axis, 0 to 1")}};
}

}  // namespace

void addMaterialClasses(Catalogue& catalogue) {
    catalogue.add(genericClass());
    catalogue.add({.family = "material",
                   .type = "null",
                   .summary = "Surface without an effect of its own; may part two media",
                   .parameters = {bounding()},
                   .children = {innerMedium(), outerMedium()}});
    catalogue.add({.family = "material",
                   .type = "doublesided",
                   .summary = "One material on the side of the normals, another on the back",
                   .children = {materialChild("front", "Material of the side to which the normals point"),
                                materialChild("back", "Material of the other side")}});
    catalogue.add({.family = "material",
                   .type = "blend",
                   .summary = "Two materials side by side in shares that can vary over the surface",
                   .children = {materialChild("first", "Material where the weight is 0"),
                                materialChild("second", "Material where the weight is 1"),
                                scalarChild("weight", 0.5, "Share of the second, 0 to 1")}});
    catalogue.add(multiClass());
    catalogue.add(cloneClass());
    catalogue.add(transmissionPolarizerClass());
    catalogue.add(reflectionPolarizerClass());
    catalogue.add(axfClass());
    catalogue.addLinked("material");
}

}  // namespace nemra::node
