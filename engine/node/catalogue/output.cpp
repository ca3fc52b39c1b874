#include "engine/node/catalogue/families.h"
#include "engine/node/catalogue/output_parts.h"

namespace nemra::node {

std::vector<ParameterSpec> falseColors(const char* unit) {
    const auto bound = [&](const char* name, double defaultValue) {
        return real(name, defaultValue).unit(unit).range(-1.0e15, 1.0e15);
    };
    return {choice("color_map")
                .option("viridis", "From dark blue over green to yellow, even to the eye (van der Walt and Smith 2015)")
                .option("gray", "From black to white")
                .option("inferno", "From black over red to yellow, even to the eye (van der Walt and Smith 2015)")
                .option("turbo", "Rainbow without bands (Mikhailov 2019)")
                .option("spectrum", "Blue, cyan, green, yellow, red, as lighting reports use")
                .doc("Colours that stand for the values"),
            choice("value_range")
                .option("auto", "From the smallest to the largest value of the picture")
                .option("fixed", "Given",
                        {bound("minimum", 0.0).doc("Value of the first colour"),
                         bound("maximum", 1000.0).doc("Value of the last colour")})
                .doc("Values that the colours span"),
            choice("axis")
                .option("linear", "Even steps of the value")
                .option("logarithmic", "Even steps of its logarithm",
                        {real("decades", 3.0)
                             .unit("decades")
                             .range(0.1, 20.0)
                             .doc("Range below the largest value, where the smallest one isn't positive or not given")})
                .doc("How values lie between the two"),
            integer("isoline_count", 0).unit("lines").range(0, 100).doc("Lines of equal value that are drawn; 0 draws none"),
            boolean("legend", true).doc("Draw a scale with numbers and unit beside the picture")};
}

namespace {

Parameter quantityShown() {
    return choice("quantity")
        .option("raw", "What the sensor measured")
        .option("scene_radiance", "Radiance or luminance of what is seen")
        .option("scene_irradiance", "Irradiance or illuminance of the surfaces")
        .option("sensor_irradiance", "Irradiance or illuminance of the camera's sensor")
        .option("sensor_power", "Power or luminous flux that a pixel receives")
        .option("sensor_exposure", "Irradiance of the sensor times the exposure time")
        .option("bsdf", "BSDF of a measured sample, 1/sr")
        .doc("Light quantity, where the instrument has it");
}

Parameter xyzToRgb() {
    // IEC 61966-2-1
    return Parameter(
               "xyz_to_rgb", NEMRA_PARAMETER_MATRIX3,
               Value{std::vector<float>{3.2406F, -1.5372F, -0.4986F, -0.9689F, 1.8758F, 0.0415F, 0.0557F, -0.2040F, 1.0570F}})
        .pure()
        .range(-1.0e3, 1.0e3)
        .doc("From XYZ, with Y = 1 for the display's white, to its linear red, green and blue; sRGB by default");
}

void addPictures(Catalogue& catalogue) {
    catalogue.add(
        {.family = "output",
         .type = "rgbimage",
         .summary =
             "Picture for a display: filters in their order, then a colour space. Without filters: spectoxyz, averageautogain",
         .parameters =
             {choice("color_space")
                  .option("srgb", "IEC 61966-2-1")
                  .option("rec2020", "ITU-R BT.2020")
                  .option("xyz", "CIE 1931 XYZ")
                  .doc("Colour space of the picture"),
              real("gamma", 0.0).pure().range(0.0, 10.0).doc("Exponent of the display curve; 0 takes the space's own curve")},
         .listClass = "filter"});
    std::vector<ParameterSpec> channel = {
        text("channel").doc("Name of the channel, such as Y, E or a wavelength; empty takes the luminance or the first channel"),
        quantityShown()};
    catalogue.add({.family = "output",
                   .type = "channelimage",
                   .summary = "One channel as a picture in false colours, with a scale in its unit",
                   .parameters = joined(std::move(channel), falseColors("")),
                   .listClass = "filter"});
    catalogue.add(
        {.family = "output",
         .type = "special",
         .summary = "Picture for a display of its own kind, described by its measured primaries and curve",
         .parameters =
             {xyzToRgb(),
              choice("curve")
                  .option("gamma", "Power law", {real("gamma", 2.2).pure().range(0.1, 10.0).doc("Exponent of the display")})
                  .option("srgb", "IEC 61966-2-1")
                  .option("pq", "Absolute luminances up to 10000 cd/m2 (SMPTE ST 2084:2014)")
                  .option("hlg", "Hybrid log-gamma (ITU-R BT.2100)")
                  .option("table", "Measured: the table of the curve")
                  .doc("From linear values to code values"),
              table("curve_samples")
                  .column(real("code", 0.0).pure().range(0.0, 1.0).doc("Code value, 1 for the largest"))
                  .column(real("luminance", 0.0).unit("cd/m2").range(0.0, 1.0e6).doc("Luminance of a grey of that code"))
                  .doc("Measured luminances, for the curve `table`"),
              real("peak_luminance", 100.0).unit("cd/m2").range(1.0e-3, 1.0e6).doc("Luminance of the display's white"),
              real("black_luminance", 0.0).unit("cd/m2").range(0.0, 1.0e4).doc("Luminance of its black, room light included"),
              integer("bit_depth", 8).unit("bits").range(8, 16).oneOf({8, 10, 16}).doc("Bits of a code value")},
         .listClass = "filter"});
}

void addTables(Catalogue& catalogue) {
    catalogue.add({.family = "output",
                   .type = "table",
                   .summary = "Numbers as a table: CSV with headers and units",
                   .parameters = {quantityShown(),
                                  choice("layout")
                                      .option("pixels", "One row for each pixel, one column for each channel")
                                      .option("grid", "One table for each channel, laid out as the picture is")
                                      .option("summary", "One row for each channel: mean, smallest, largest value and uniformity")
                                      .doc("What rows and columns are"),
                                  text("channels").doc("Names of the channels, with commas between; empty takes all"),
                                  integer("digits", 6).unit("digits").range(1, 17).doc("Significant digits"),
                                  choice("separator")
                                      .option("comma", "Comma, with a decimal point")
                                      .option("semicolon", "Semicolon, with a decimal comma")
                                      .option("tab", "Tabulator, with a decimal point")
                                      .doc("What stands between two cells")},
                   .listClass = "filter"});
    catalogue.add(
        {.family = "output",
         .type = "bsdf",
         .summary = "Measured scattering of a sample, from a bsdfcapture instrument",
         .parameters = {choice("layout")
                            .option("table", "CSV: directions of the light in columns, outgoing directions in rows")
                            .option("windows_xml",
                                    "XML of window simulation (LBNL), for an instrument with the basis of Klems (1994)")
                            .doc("Form of the file"),
                        choice("spectral")
                            .option("photopic", "Weighed with the luminous efficiency function and an illuminant")
                            .option("solar", "Weighed with the direct light of the sun (ASTM G173-03), for bands up to 1200 nm")
                            .option("photopic_and_solar", "Both, as programs that simulate windows want it")
                            .option("channels", "One block for each channel")
                            .doc("What becomes of the wavelengths"),
                        text("manufacturer").doc("Manufacturer that the file names"),
                        text("product").doc("Product that the file names"),
                        real("thickness", 0.0).unit("m").range(0.0, 1.0e3).doc("Thickness of the sample that the file states")},
         .children = {child("illuminant", "spectrum", "preset", "Illuminant of photopic values; only its shape counts",
                            {{"preset", word("cie_d65")}})}});
}

}  // namespace

void addOutputClasses(Catalogue& catalogue) {
    addPictures(catalogue);
    addTables(catalogue);
    addGlareOutputs(catalogue);
    catalogue.addLinked("output");
}

}  // namespace nemra::node
