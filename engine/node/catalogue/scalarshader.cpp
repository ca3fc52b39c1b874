#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/surface_words.h"

namespace nemra::node {

namespace {

/// A scalar has the unit of its use: 1 for a share or a factor, m for a height.
Parameter scalar(std::string name, double defaultValue) {
    return real(std::move(name), defaultValue).pure().range(-1.0e9, 1.0e9);
}

NodeClass textureClass() {
    return {.family = "scalarshader",
            .type = "texture",
            .summary = "Value read from a picture on the surface",
            .parameters = joined({choice("channel")
                                      .option("luminance", "Luminance of the pixel")
                                      .option("red", "Red channel")
                                      .option("green", "Green channel")
                                      .option("blue", "Blue channel")
                                      .option("alpha", "Coverage of the pixel")
                                      .doc("What of a pixel counts; a picture with one channel has only that"),
                                  scalar("black_value", 0.0).doc("Value where the picture is 0"),
                                  scalar("white_value", 1.0).doc("Value where the picture is 1")},
                                 pictureMapping()),
            .children = {child("image", "image", "file", "The picture; its numbers are taken without a tone curve")}};
}

NodeClass angularClass() {
    return {.family = "scalarshader",
            .type = "angular",
            .summary = "Value that depends on the angle under which the surface is seen",
            .parameters = {table("samples")
                               .column(angle("angle", 0.0, 0.0, 180.0).doc("Angle of the sample"))
                               .column(scalar("value", 0.0).doc("Value of the sample"))
                               .doc("The samples, in any order; without samples the value is zero"),
                           tableInterpolation(),
                           choice("axis")
                               .option("normal", "The normal on the side that is seen")
                               .option("front_normal", "The normal of the front; the back counts from 90 to 180 degrees")
                               .option("direction", "A direction in the scene",
                                       {direction("axis_direction", 0.0, 0.0, 1.0).doc("Direction in the frame of the scene")})
                               .doc("What the angle is measured from"),
                           scalar("scale", 1.0).doc("Factor on all values")}};
}

NodeClass randomClass() {
    return {.family = "scalarshader",
            .type = "random",
            .summary = "Random value, the same at every visit of a place",
            .parameters = {choice("distribution")
                               .option("uniform", "Every value between two limits is equally likely",
                                       {scalar("minimum", 0.0).doc("Least value"), scalar("maximum", 1.0).doc("Largest value")})
                               .option("normal", "Normal distribution",
                                       {scalar("mean", 0.5).doc("Mean"),
                                        real("standard_deviation", 0.1).pure().range(0.0, 1.0e9).doc("Standard deviation")})
                               .doc("How the values are spread"),
                           choice("variation")
                               .option("instance", "One value for each instance")
                               .option("triangle", "One value for each triangle of the mesh")
                               .option("cell", "One value for each cell of a lattice over u and v",
                                       {matrix2("lattice")
                                            .pure()
                                            .range(-1.0e6, 1.0e6)
                                            .doc("Sides of a cell as columns, in u and v; must not be singular")})
                               .doc("Over what the value stays the same"),
                           integer("seed", 0).pure().range(0, 2147483647).doc("Another seed gives other values")}};
}

}  // namespace

void addScalarshaderClasses(Catalogue& catalogue) {
    catalogue.add({.family = "scalarshader",
                   .type = "uniform",
                   .summary = "The same value everywhere",
                   .parameters = {scalar("value", 1.0).doc("Value, in the unit of the shader's use")}});
    catalogue.add(textureClass());
    catalogue.add(angularClass());
    catalogue.add(randomClass());
    catalogue.addLinked("scalarshader");
}

}  // namespace nemra::node
