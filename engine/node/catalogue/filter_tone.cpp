#include "engine/node/catalogue/filter_parts.h"

namespace nemra::node {

namespace {

Parameter key() {
    return real("key", 0.18)
        .pure()
        .range(1.0e-3, 1.0)
        .doc("Display value that the log-average luminance gets; 0.18 is a middle grey");
}

Parameter whiteLuminance() {
    return choice("white")
        .option("brightest", "The largest luminance of the picture becomes the display's white")
        .option(
            "luminance", "A given luminance becomes the display's white",
            {real("white_luminance", 1000.0).unit("cd/m2").range(1.0e-6, 1.0e12).doc("Least luminance that is shown as white")})
        .doc("What is shown as white");
}

Parameter displayLuminance() {
    return real("display_luminance", 100.0).unit("cd/m2").range(1.0, 1.0e5).doc("Luminance of the display's white");
}

void addGains(Catalogue& catalogue) {
    catalogue.add(
        {.family = "filter",
         .type = "gain",
         .summary = "Fixed factor from luminance to display value",
         .parameters = {
             real("gain", 1.0).unit("1/(cd/m2)").range(0.0, 1.0e15).doc("Display value of a luminance of 1 cd/m2; white is 1")}});
    catalogue.add({.family = "filter",
                   .type = "averageautogain",
                   .summary = "Factor that brings the mean luminance of the picture to a given display value",
                   .parameters = {real("target", 0.18).pure().range(1.0e-6, 1.0).doc("Mean display luminance; white is 1")}});
    catalogue.add(
        {.family = "filter",
         .type = "histogramautogain",
         .summary = "Brightness by the histogram of the picture's luminances",
         .parameters = {
             choice("method")
                 .option("percentile", "One factor, which brings a percentile of the luminances to a given display value",
                         {real("percentile", 95.0)
                              .unit("%")
                              .range(0.0, 100.0)
                              .doc("Share of the pixels that are darker; 100 takes the brightest pixel"),
                          real("target", 1.0).pure().range(1.0e-6, 100.0).doc("Display luminance that it gets; white is 1")})
                 .option("adjustment",
                         "Tone curve that spreads luminances by how often they occur, without raising any contrast (Ward, "
                         "Rushmeier and Piatko 1997)",
                         {displayLuminance(), real("display_black", 1.0)
                                                  .unit("cd/m2")
                                                  .range(1.0e-6, 1.0e4)
                                                  .doc("Luminance of the display's black, room light included")})
                 .doc("What the histogram decides")}});
    catalogue.add(
        {.family = "filter",
         .type = "isosensitivity",
         .summary = "Exposure of a photographic camera with a given ISO speed (ISO 12232:2019): white at the saturation exposure "
                    "78 lx s / speed",
         .parameters = {
             real("iso", 100.0).pure().range(0.1, 1.0e7).doc("ISO speed"),
             choice("settings")
                 .option("instrument", "Exposure time and f-number of the instrument, f/8 where it has none")
                 .option("manual", "Given here",
                         {real("shutter_time", 0.01).unit("s").range(1.0e-9, 1.0e9).doc("Exposure time"),
                          real("f_number", 8.0).pure().range(0.1, 1000.0).doc("Focal length over diameter of the aperture")})
                 .doc("Where exposure time and aperture come from"),
             real("lens_factor", 0.65)
                 .pure()
                 .range(1.0e-3, 1.0)
                 .doc("q in H = q L t / N2: transmittance, vignetting and field angle of the lens; 0.65 in the standard")}});
}

void addOperators(Catalogue& catalogue) {
    catalogue.add({.family = "filter",
                   .type = "reinhardglobal",
                   .summary = "Tone curve of photography, the same for all pixels (Reinhard, Stark, Shirley and Ferwerda 2002)",
                   .parameters = {key(), whiteLuminance()}});
    catalogue.add(
        {.family = "filter",
         .type = "reinhardlocal",
         .summary =
             "Dodging and burning: tone curve by the luminance of the surroundings (Reinhard, Stark, Shirley and Ferwerda 2002)",
         .parameters = {key(), real("sharpening", 8.0).pure().range(0.0, 100.0).doc("Phi: how much edges are sharpened"),
                        real("threshold", 0.05)
                            .pure()
                            .range(1.0e-4, 1.0)
                            .doc("Epsilon: contrast between two scales at which the surroundings end"),
                        integer("scales", 8)
                            .unit("scales")
                            .range(2, 16)
                            .doc("Sizes of surroundings that are tried, each 1.6 times as "
                                 "large as the one before")}});
    catalogue.add(
        {.family = "filter",
         .type = "drago",
         .summary = "Logarithmic tone curve whose base varies with luminance (Drago, Myszkowski, Annen and Chiba 2003)",
         .parameters = {real("bias", 0.85).pure().range(0.1, 1.0).doc("Exponent of the bias curve; more gives darker pictures"),
                        displayLuminance()}});
    catalogue.add(
        {.family = "filter",
         .type = "purkinje",
         .summary = "Night vision: rods take over and colours turn bluish in dim light (Kirk and O'Brien 2011)",
         .parameters = {choice("adaptation")
                            .option("average", "The eye is adapted to the log-average luminance of the picture")
                            .option("local", "Each part of the eye is adapted to what it sees")
                            .option("fixed", "The eye is adapted to a given luminance",
                                    {real("adaptation_luminance", 0.1)
                                         .unit("cd/m2")
                                         .range(1.0e-7, 1.0e7)
                                         .doc("Luminance that the eye is adapted to")})
                            .doc("State of the eye"),
                        real("strength", 1.0).pure().range(0.0, 1.0).doc("Share of the effect; 0 leaves the picture as it is")}});
}

}  // namespace

void addToneFilters(Catalogue& catalogue) {
    addGains(catalogue);
    addOperators(catalogue);
}

}  // namespace nemra::node
