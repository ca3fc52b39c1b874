#include "engine/node/catalogue/output_parts.h"

namespace nemra::node {

namespace {

/// How sources of glare are found in the picture and rated.
std::vector<ParameterSpec> glareSearch() {
    return {
        choice("detection")
            .option("fixed", "Pixels above a luminance",
                    {real("threshold_luminance", 2000.0).unit("cd/m2").range(0.0, 1.0e9).doc("Least luminance of a source")})
            .option("mean_factor", "Pixels above a multiple of the mean luminance of the picture",
                    {real("threshold_factor", 5.0).pure().range(1.0, 1.0e6).doc("Least luminance of a source over the mean")})
            .option(
                "task_factor", "Pixels above a multiple of the mean luminance about the task",
                {real("threshold_factor", 5.0).pure().range(1.0, 1.0e6).doc("Least luminance of a source over that of the task"),
                 vector("task_position", 0.0, 0.0, 0.0).unit("m").range(-1.0e9, 1.0e9).doc("Middle of the task"),
                 real("task_diameter", 20.0).unit("deg").range(0.1, 180.0).doc("Angle across the task, as seen")})
            .doc("Which pixels belong to sources of glare"),
        real("merge_angle", 5.7)
            .unit("deg")
            .range(0.0, 90.0)
            .doc("Bright pixels nearer to each other than this belong to one source; the value is that of Wienold and "
                 "Christoffersen "
                 "(2006)"),
        choice("position_index")
            .option("table", "Table of CIE 117:1995, interpolated; positions that it excludes don't count and are listed")
            .option("formula", "Closed form of the Guth index (IES Lighting Handbook)")
            .doc("How a source's place in the visual field weighs"),
        real("minimum_solid_angle", 3.0e-4)
            .unit("sr")
            .range(0.0, 1.0)
            .doc("Sources smaller than this lie outside the method; they are rated all the same and marked"),
        real("maximum_solid_angle", 0.1)
            .unit("sr")
            .range(1.0e-6, 12.6)
            .doc("Sources larger than this lie outside the method; they are rated all the same and marked"),
        choice("background")
            .option("without_sources", "Mean luminance of the visual field from which the sources are cut out")
            .option("whole", "Mean luminance of the whole visual field")
            .option("given", "A given luminance",
                    {real("background_luminance", 50.0).unit("cd/m2").range(1.0e-6, 1.0e9).doc("Luminance of the background")})
            .doc("Background of the unified glare rating"),
    };
}

}  // namespace

void addGlareOutputs(Catalogue& catalogue) {
    std::vector<ParameterSpec> marks = {
        boolean("number_sources", true).doc("Write beside each source the number that it has in the report"),
        boolean("outline_only", false).doc("Draw the edges of the sources and leave the picture visible")};
    catalogue.add(
        {.family = "output",
         .type = "glaremap",
         .summary =
             "Picture of the luminances with the sources of glare marked: red those that count, orange those of them whose "
             "size lies outside the method, grey those that are excluded",
         .parameters = joined(joined(glareSearch(), std::move(marks)), falseColors("cd/m2"))});
    std::vector<ParameterSpec> ratings = {
        boolean("ugr", true).doc("Unified glare rating (CIE 117:1995)"),
        boolean("dgp", true).doc("Daylight glare probability (Wienold and Christoffersen 2006)"),
        boolean("list_sources", true).doc("List each source with luminance, solid angle, position and index")};
    catalogue.add({.family = "output",
                   .type = "glarereport",
                   .summary = "Glare ratings of the view and the sources that cause them, as text, HTML or CSV",
                   .parameters = joined(glareSearch(), std::move(ratings)),
                   .children = {child("title", "text", "default", "Title of the report")}});
}

}  // namespace nemra::node
