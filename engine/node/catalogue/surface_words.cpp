#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

std::vector<ParameterSpec> pictureMapping() {
    return {
        choice("mapping")
            .option("uv", "The u and v of the mesh")
            .option("planar", "Parallel projection along an axis of the geometry",
                    {direction("projection_axis", 0.0, 0.0, 1.0).doc("Axis of the projection, in the frame of the geometry"),
                     real("picture_width", 1.0).unit("m").range(1.0e-9, 1.0e9).doc("Width of the picture on the geometry"),
                     real("picture_height", 1.0).unit("m").range(1.0e-9, 1.0e9).doc("Height of the picture on the geometry")})
            .option("cylindrical", "Azimuth and height about an axis of the geometry through its origin",
                    {direction("projection_axis", 0.0, 0.0, 1.0).doc("Axis of the cylinder, in the frame of the geometry"),
                     real("picture_height", 1.0).unit("m").range(1.0e-9, 1.0e9).doc("Height of the picture on the geometry")})
            .option("spherical", "Azimuth and elevation about the origin of the geometry",
                    {direction("projection_axis", 0.0, 0.0, 1.0).doc("Axis through the poles, in the frame of the geometry")})
            .doc("Where the coordinates on the picture come from; u and v run from 0 to 1 over the picture, v upwards"),
        matrix3("uv_transform").pure().range(-1.0e6, 1.0e6).doc("Acts on (u, v, 1) before the picture is read"),
        choice("wrapping")
            .option("repeat", "The picture repeats")
            .option("mirror", "The picture repeats, every other one mirrored")
            .option("clamp", "The pixels of the edge go on")
            .option("zero", "Zero outside")
            .doc("What lies outside the picture"),
        choice("filtering")
            .option("bilinear", "Bilinear between four pixels")
            .option("nearest", "The nearest pixel")
            .option("bicubic", "Bicubic between sixteen pixels (Catmull and Rom 1974)")
            .doc("What lies between the pixels"),
    };
}

Parameter tableInterpolation() {
    return choice("interpolation")
        .option("linear", "Straight lines between the samples")
        .option("nearest", "Value of the nearest sample")
        .option("cubic", "Monotone cubic curve through the samples (Fritsch and Carlson 1980)")
        .doc("What lies between two samples; outside them the first or last one holds");
}

Parameter listSelection() {
    return choice("selection")
        .option("index", "By its place in the list",
                {integer("index", 0).pure().range(0, 1000000).doc("Place in the list, from 0; past its end nothing is selected")})
        .option("name", "By its name", {text("entry").doc("Name of the entry; an unknown one selects nothing")})
        .doc("Which entry of the list is used");
}

Parameter listWeights(std::string doc) {
    return table("weights")
        .column(real("weight", 1.0).pure().range(0.0, 1.0e6).doc("Weight of the entry in the same place of the list"))
        .doc(std::move(doc));
}

ChildSpec scalarChild(std::string name, double value, std::string doc) {
    return child(std::move(name), "scalarshader", "uniform", std::move(doc), {{"value", number(value)}});
}

ChildSpec spectrumChild(std::string name, double value, std::string doc) {
    return child(std::move(name), "spectrum", "uniform", std::move(doc), {{"value", number(value)}});
}

ChildSpec filterChild(std::string name, std::string doc) {
    return child(std::move(name), "filtershader", "uniform", std::move(doc));
}

Parameter angle(std::string name, double defaultDeg, double minimumDeg, double maximumDeg) {
    return real(std::move(name), defaultDeg).unit("deg").range(minimumDeg, maximumDeg);
}

Parameter share(std::string name, double defaultValue) { return real(std::move(name), defaultValue).pure().range(0.0, 1.0); }

}  // namespace nemra::node
