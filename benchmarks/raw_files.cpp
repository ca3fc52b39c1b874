// Files of a result of 4096 x 4096 pixels with X, Y, Z: time to write one and to read it back, beside a plain program that hands
// the same numbers, ready made, to the format's own library and writes what it gives. For svraw that is a copy of the film's
// arrays to a file. Given a side in pixels as argument, takes that instead of 4096.
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <png.h>

#include <chrono>
#include <cmath>
#include <cstdio>
// The library's header takes FILE and size_t for granted.
#include <jpeglib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>

#include "engine/common/log.h"
#include "engine/core/image/image_node.h"
#include "engine/core/image/read_exr.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/write_file.h"
#include "engine/core/output/write_result.h"
#include "engine/core/result/read_file.h"
#include "engine/core/result/svraw.h"

using namespace nemra;
using namespace nemra::core;

namespace {

constexpr int kRuns = 3;

double secondsOf(const std::function<void()>& call) {
    double best = 1.0e300;
    for (int i = 0; i < kRuns; ++i) {
        const auto began = std::chrono::steady_clock::now();
        call();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
    }
    return best;
}

void demand(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

/// Smooth luminances with the noise of a hundred samples, cut to quanta as a render's film is.
std::shared_ptr<Raw> makeResult(int side) {
    auto film = std::make_shared<Film>();
    film->width = film->height = side;
    for (const char* name : {"X", "Y", "Z"}) film->channels.push_back({name, ChannelKind::luminous, 0.0, 0.0, "cd.m^-2"});
    const std::size_t pixels = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
    film->high.resize(3 * pixels);
    film->low.resize(3 * pixels);
    film->samples.assign(pixels, 100);
    film->squares.resize(pixels);
    film->depth.resize(pixels);
    film->depthSamples.assign(pixels, 100);
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0.0, 0.03);
    constexpr double coarse = 1.0 / 1024, fine = coarse / (1 << 26);
    for (int x = 0; x < side; ++x) {
        for (int y = 0; y < side; ++y) {
            const double level = 100.0 * 100.0 * (1.1 + std::sin(9.0 * x / side) * std::cos(7.0 * y / side));
            for (int c = 0; c < 3; ++c) {
                const double sum = level * (1.0 + 0.2 * c + noise(random));
                const double high = std::round(sum / coarse) * coarse;
                film->high[film->cell(x, y, c)] = high;
                film->low[film->cell(x, y, c)] = std::round((sum - high) / fine) * fine;
            }
            film->squares.put(film->pixel(x, y), level * level / 95.0);
            film->depth[film->pixel(x, y)] = 100.0 * (2.0 + static_cast<double>(x + y) / side);
        }
    }
    RawParts parts;
    parts.film = std::move(film);
    auto raw = std::make_shared<Raw>(std::move(parts));
    raw->view();
    return raw;
}

std::vector<std::vector<float>> planesOf(const LightView& view) {
    std::vector<std::vector<float>> planes(3);
    for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < view.height; ++y) {
            for (int x = 0; x < view.width; ++x) planes[std::size_t(c)].push_back(static_cast<float>(view.at(c, x, y, 0)));
        }
    }
    return planes;
}

Imf::FrameBuffer frameOf(std::vector<std::vector<float>>& planes, int side) {
    Imf::FrameBuffer frame;
    const char* const names[] = {"X", "Y", "Z"};
    for (std::size_t c = 0; c < 3; ++c) {
        frame.insert(names[c], Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(planes[c].data()), sizeof(float),
                                          sizeof(float) * static_cast<std::size_t>(side)));
    }
    return frame;
}

void plainExr(const std::string& path, std::vector<std::vector<float>>& planes, int side) {
    Imf::Header header(side, side);
    header.compression() = Imf::ZIP_COMPRESSION;
    for (const char* const name : {"X", "Y", "Z"}) header.channels().insert(name, Imf::Channel(Imf::FLOAT));
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(frameOf(planes, side));
    file.writePixels(side);
}

void readPlainExr(const std::string& path, std::vector<std::vector<float>>& planes, int side) {
    Imf::InputFile file(path.c_str());
    file.setFrameBuffer(frameOf(planes, side));
    file.readPixels(0, side - 1);
}

void plainPng(const std::string& path, const DisplayImage& display) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(display.width);
    image.height = static_cast<png_uint_32>(display.height);
    image.format = PNG_FORMAT_RGB;
    demand(png_image_write_to_file(&image, path.c_str(), 0, display.bytes.data(), 0, nullptr) != 0, "png");
}

void plainJpeg(const std::string& path, const DisplayImage& display) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = static_cast<JDIMENSION>(display.width);
    jpeg.image_height = static_cast<JDIMENSION>(display.height);
    jpeg.input_components = 3;
    jpeg.in_color_space = JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 95, TRUE);
    for (int i = 0; i < 3; ++i) jpeg.comp_info[i].h_samp_factor = jpeg.comp_info[i].v_samp_factor = 1;
    jpeg_start_compress(&jpeg, TRUE);
    while (jpeg.next_scanline < jpeg.image_height) {
        JSAMPROW row =
            const_cast<JSAMPROW>(display.bytes.data()) + 3 * static_cast<std::size_t>(display.width) * jpeg.next_scanline;
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(file);
}

void plainCopy(const std::string& path, const Film& film) {
    std::ofstream file(path, std::ios::binary);
    const auto put = [&](const auto& array) {
        file.write(reinterpret_cast<const char*>(array.data()), static_cast<std::streamsize>(array.size() * sizeof(array[0])));
    };
    put(film.high);
    put(film.low);
    put(film.samples);
    put(film.squares.upper);
    put(film.squares.lower);
    put(film.squares.part);
    put(film.depth);
    put(film.depthSamples);
}

void plainCsv(const std::string& path, const std::vector<std::vector<float>>& planes, int side) {
    std::FILE* const file = std::fopen(path.c_str(), "w");
    std::fputs("x,y,X,Y,Z\n", file);
    std::size_t i = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x, ++i) {
            std::fprintf(file, "%d,%d,%.9g,%.9g,%.9g\n", x, y, static_cast<double>(planes[0][i]),
                         static_cast<double>(planes[1][i]), static_cast<double>(planes[2][i]));
        }
    }
    std::fclose(file);
}

void report(const char* what, double ours, double plain) {
    std::printf("%-28s %8.2f s   %5.2f times the plain one\n", what, ours, ours / plain);
    std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
    const int side = count > 1 ? std::atoi(arguments[1]) : 4096;
    demand(side >= 16 && side <= 8192, "a side of 16 to 8192 pixels");
    node::registerClasses();
    const log::Capture silence([](const log::Message&) {});
    const auto folder = std::filesystem::temp_directory_path() / "nemra-raw-files";
    std::filesystem::create_directories(folder);
    const auto path = [&](const char* name) { return (folder / name).string(); };

    const auto raw = makeResult(side);
    auto planes = planesOf(*raw->view());
    std::printf("%d x %d pixels, 3 channels; the best of %d runs\n", side, side, kRuns);

    const double copy = secondsOf([&] { plainCopy(path("copy"), *raw->film()); });
    report("svraw, written", secondsOf([&] { demand(writeRaw(*raw, path("a.svraw"), "svraw"), "svraw"); }), copy);
    const double copyBack = secondsOf([&] { demand(readFileWhole(path("copy")).has_value(), "copy"); });
    std::shared_ptr<Raw> again;
    report("svraw, read", secondsOf([&] { again = readSvraw(readFileWhole(path("a.svraw"))->bytes(), "a"); }), copyBack);
    demand(again && again->film()->low == raw->film()->low, "svraw came back otherwise");
    again.reset();

    const double exr = secondsOf([&] { plainExr(path("plain.exr"), planes, side); });
    report("exr, written", secondsOf([&] { demand(writeRaw(*raw, path("a.exr"), "exr"), "exr"); }), exr);
    auto taken = planes;
    const double exrBack = secondsOf([&] { readPlainExr(path("plain.exr"), taken, side); });
    report("exr, read", secondsOf([&] { again = readExr(readFileWhole(path("a.exr"))->bytes(), "a"); }), exrBack);
    demand(static_cast<float>(again->view()->at(1, 3, 5, 0)) == planes[1][std::size_t(5 * side + 3)], "exr came back otherwise");
    again.reset();

    const double csv = secondsOf([&] { plainCsv(path("plain.csv"), planes, side); });
    report("csv, written", secondsOf([&] { demand(writeRaw(*raw, path("a.csv"), "csv"), "csv"); }), csv);
    std::printf("%-28s %8.2f s\n", "hdr, written", secondsOf([&] { demand(writeRaw(*raw, path("a.hdr"), "hdr"), "hdr"); }));

    DisplayImage display;
    const double filters = secondsOf([&] { display = makeDisplayImage(*raw, false); });
    std::printf("%-28s %8.2f s   are part of png and jpg\n", "filters and colour space", filters);
    const double png = secondsOf([&] { plainPng(path("plain.png"), display); });
    report("png, written, after these", secondsOf([&] { demand(writeResult(*raw, path("a.png"), "png"), "png"); }) - filters,
           png);
    const double jpg = secondsOf([&] { plainJpeg(path("plain.jpg"), display); });
    report("jpg, written, after these", secondsOf([&] { demand(writeResult(*raw, path("a.jpg"), "jpg"), "jpg"); }) - filters,
           jpg);
    std::filesystem::remove_all(folder);
    return 0;
}
