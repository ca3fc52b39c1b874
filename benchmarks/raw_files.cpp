// Files of a result of 4096 x 4096 pixels with X, Y, Z: time to write one and to read it back, beside a plain program that hands
// the same numbers, ready made, to the format's own library and writes what it gives, or reads what that library gives. For svraw
// that is a copy of the film's arrays to a file, for csv printf, for hdr a loop without run lengths.
//
// Written files stand beside a plain program that leaves them to the system, and beside one that waits for the disk as we do.
// Read pictures stand beside one that ends at X, Y, Z (floats, rows from the top, in fresh memory: a table for the codes, a
// matrix), and beside one that ends at what the library gives; ours ends at a result, 45 bytes for each pixel that are written.
//
// All take turns, and the medians count, since the machine's speed drifts. Arguments: a side in pixels in place of 4096, a number
// of turns in place of 5, formats in place of all (svraw exr csv hdr png jpg png16).
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <fcntl.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
// The library's header takes FILE and size_t for granted.
#include <jpeglib.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include "engine/common/log.h"
#include "engine/core/film/arrays.h"
#include "engine/core/image/image_node.h"
#include "engine/core/image/read_exr.h"
#include "engine/core/output/encode.h"
#include "engine/core/output/picture.h"
#include "engine/core/output/write_file.h"
#include "engine/core/output/write_result.h"
#include "engine/core/result/read_file.h"
#include "engine/core/result/svraw.h"

using namespace nemra;
using namespace nemra::core;

namespace {

double seconds(const std::function<void()>& call) {
    const auto began = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
    return values[values.size() / 2];
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
    makeArrays(*film);
    film->samples.assign(pixels, 100);
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

std::vector<std::vector<float>> readPlainExr(const std::string& path, int side) {
    Imf::InputFile file(path.c_str());
    std::vector<std::vector<float>> planes(3,
                                           std::vector<float>(static_cast<std::size_t>(side) * static_cast<std::size_t>(side)));
    file.setFrameBuffer(frameOf(planes, side));
    file.readPixels(0, side - 1);
    return planes;
}

/// What plain programs make of linear R, G, B.
std::vector<float> toXyz(const ColorSpace& space, std::size_t pixels, const auto& component) {
    std::vector<float> xyz;
    xyz.reserve(3 * pixels);
    for (std::size_t i = 0; i < 3 * pixels; i += 3) {
        for (const double value : space.toXyz(component(i), component(i + 1), component(i + 2))) {
            xyz.push_back(static_cast<float>(value));
        }
    }
    return xyz;
}

/// Of codes, of which the largest stands for 1.
template <class Code>
std::vector<float> toXyz(const std::vector<unsigned char>& codes) {
    const ColorSpace& space = colorSpace("srgb");
    constexpr int most = std::numeric_limits<Code>::max();
    std::vector<double> light;
    for (int code = 0; code <= most; ++code) light.push_back(space.decode(static_cast<double>(code) / most));
    const auto* const all = reinterpret_cast<const Code*>(codes.data());
    return toXyz(space, codes.size() / sizeof(Code) / 3, [&](std::size_t i) { return light[all[i]]; });
}

png_image describe(const DisplayImage& display) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(display.width);
    image.height = static_cast<png_uint_32>(display.height);
    image.format = display.bits == 16 ? PNG_FORMAT_LINEAR_RGB : PNG_FORMAT_RGB;
    return image;
}

void plainPng(const std::string& path, const DisplayImage& display) {
    png_image image = describe(display);
    demand(png_image_write_to_file(&image, path.c_str(), 0, display.bytes.data(), 0, nullptr) != 0, "png");
}

std::vector<unsigned char> readPlainPng(const std::string& path, const DisplayImage& display) {
    png_image image = describe(display);
    std::vector<unsigned char> codes(display.bytes.size());
    demand(png_image_begin_read_from_file(&image, path.c_str()) != 0, "png");
    image.format = display.bits == 16 ? PNG_FORMAT_LINEAR_RGB : PNG_FORMAT_RGB;
    demand(png_image_finish_read(&image, nullptr, codes.data(), 0, nullptr) != 0, "png");
    return codes;
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

std::vector<unsigned char> readPlainJpeg(const std::string& path, const DisplayImage& display) {
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    jpeg_stdio_src(&jpeg, file);
    jpeg_read_header(&jpeg, TRUE);
    jpeg_start_decompress(&jpeg);
    std::vector<unsigned char> codes(display.bytes.size());
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = codes.data() + 3 * static_cast<std::size_t>(display.width) * jpeg.output_scanline;
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
    std::fclose(file);
    return codes;
}

void plainCopy(const std::string& path, const Film& film) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    const auto put = [&](const auto& array) {
        demand(std::fwrite(array.data(), sizeof(array[0]), array.size(), file) > 0, "copy");
    };
    put(film.high);
    put(film.low);
    put(film.samples);
    put(film.squares.upper);
    put(film.squares.lower);
    put(film.squares.part);
    put(film.depth);
    put(film.depthSamples);
    std::fclose(file);
}

void plainHdr(const std::string& path, const std::vector<std::vector<float>>& planes, int side) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    std::fprintf(file, "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y %d +X %d\n", side, side);
    for (std::size_t i = 0; i < planes[0].size(); ++i) {
        const float rgb[] = {planes[0][i], planes[1][i], planes[2][i]};
        int exponent = 0;
        const float largest = std::max({rgb[0], rgb[1], rgb[2]});
        const float scale = std::frexp(largest, &exponent) * 256.0F / largest;
        unsigned char pixel[4] = {0, 0, 0, static_cast<unsigned char>(exponent + 128)};
        for (int c = 0; c < 3; ++c) pixel[c] = static_cast<unsigned char>(std::max(rgb[c], 0.0F) * scale);
        std::fwrite(pixel, 4, 1, file);
    }
    std::fclose(file);
}

std::vector<float> readPlainHdr(const std::string& path, int side) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    for (int lines = 0; lines < 4;) lines += std::fgetc(file) == '\n';
    std::vector<float> rgb;
    const auto pixels = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
    rgb.reserve(3 * pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
        unsigned char pixel[4];
        demand(std::fread(pixel, 4, 1, file) == 1, "hdr");
        const float scale = std::ldexp(1.0F, pixel[3] - 136);
        for (std::size_t c = 0; c < 3; ++c) rgb.push_back((pixel[c] + 0.5F) * scale);
    }
    std::fclose(file);
    return rgb;
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

void flush(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY);
    demand(file >= 0 && ::fsync(file) == 0, "flush");
    ::close(file);
}

class Turns {
public:
    explicit Turns(int count) : count_(count) {}

    struct Plain {
        const char* what;
        std::function<void()> call;
    };
    void compare(const char* what, const std::function<void()>& ours, const std::vector<Plain>& plains) {
        std::vector<std::vector<double>> times(plains.size());
        std::vector<double> mine;
        for (int i = 0; i < count_; ++i) {
            for (std::size_t p = 0; p < plains.size(); ++p) times[p].push_back(seconds(plains[p].call));
            mine.push_back(seconds(ours));
        }
        std::printf("%-15s %6.2f s", what, median(mine));
        for (std::size_t p = 0; p < plains.size(); ++p) {
            std::printf("   %5.2f times %s (%.2f s)", median(mine) / median(times[p]), plains[p].what, median(times[p]));
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    /// `plain` writes that file.
    void written(const char* what, const std::function<void()>& ours, const std::string& path,
                 const std::function<void(const std::string&)>& plain) {
        compare(what, ours, {{"a plain one", [&] { plain(path); }}, {"a flushed one", [&] { plain(path), flush(path); }}});
    }

private:
    int count_;
};

}  // namespace

int main(int count, char** arguments) {
    const int side = count > 1 ? std::atoi(arguments[1]) : 4096;
    const int turns = count > 2 ? std::atoi(arguments[2]) : 5;
    demand(side >= 16 && side <= 8192 && turns > 0, "a side of 16 to 8192 pixels and a number of turns");
    const auto wanted = [&](const std::string& format) {
        return count <= 3 || std::find(arguments + 3, arguments + count, format) != arguments + count;
    };
    node::registerClasses();
    const log::Capture silence([](const log::Message&) {});
    const auto folder = std::filesystem::temp_directory_path() / "nemra-raw-files";
    std::filesystem::create_directories(folder);
    const auto path = [&](const char* name) { return (folder / name).string(); };

    const auto raw = makeResult(side);
    auto planes = planesOf(*raw->view());
    std::printf("%d x %d pixels, 3 channels; medians of %d turns\n", side, side, turns);
    Turns in(turns);

    if (wanted("svraw")) {
        std::shared_ptr<Raw> again;
        in.written(
            "svraw, written", [&] { demand(writeRaw(*raw, path("a.svraw"), "svraw"), "svraw"); }, path("copy"),
            [&](const std::string& name) { plainCopy(name, *raw->film()); });
        in.compare("svraw, read", [&] { again.reset(), again = readSvraw(readFileWhole(path("a.svraw"))->bytes(), "a"); },
                   {{"a copy", [&] { demand(readFileWhole(path("copy")).has_value(), "copy"); }}});
        demand(again && again->film()->low == raw->film()->low, "svraw came back otherwise");
    }
    if (wanted("exr")) {
        std::shared_ptr<Raw> again;
        in.written(
            "exr, written", [&] { demand(writeRaw(*raw, path("a.exr"), "exr"), "exr"); }, path("plain.exr"),
            [&](const std::string& name) { plainExr(name, planes, side); });
        in.compare("exr, read", [&] { again.reset(), again = readExr(readFileWhole(path("a.exr"))->bytes(), "a"); },
                   {{"a plain one", [&] { readPlainExr(path("plain.exr"), side); }}});
        demand(static_cast<float>(again->view()->at(1, 3, 5, 0)) == planes[1][std::size_t(5 * side + 3)],
               "exr came back otherwise");
    }
    if (wanted("csv")) {
        in.written(
            "csv, written", [&] { demand(writeRaw(*raw, path("a.csv"), "csv"), "csv"); }, path("plain.csv"),
            [&](const std::string& name) { plainCsv(name, planes, side); });
    }
    const auto readPicture = [&](const char* name) {
        const auto file = readFileWhole(path(name));
        demand(rawFromPictureFile(file->bytes(), name, "auto", 1.0, false)->width() == side, name);
    };
    if (wanted("hdr")) {
        in.written(
            "hdr, written", [&] { demand(writeRaw(*raw, path("a.hdr"), "hdr"), "hdr"); }, path("plain.hdr"),
            [&](const std::string& name) { plainHdr(name, planes, side); });
        const auto plain = [&] {
            const auto rgb = readPlainHdr(path("plain.hdr"), side);
            toXyz(radianceColorSpace(), rgb.size() / 3, [&](std::size_t i) { return rgb[i]; });
        };
        in.compare("hdr, read", [&] { readPicture("a.hdr"); },
                   {{"X, Y, Z", plain}, {"numbers", [&] { readPlainHdr(path("plain.hdr"), side); }}});
    }
    // Filters and colour space are ours alone, so writing begins behind them.
    const auto shown = [&](const char* format, int bits, auto&& encode, auto&& plainWrite, auto&& plainRead) {
        if (!wanted(format)) return;
        const DisplayImage display = makeDisplayImage(*raw, false, bits);
        const std::string name = path(format);
        const std::string plain = path("plain.") + format;
        in.written((std::string(format) + ", written").c_str(), [&] { demand(encode(display, name), format); }, plain,
                   [&](const std::string& to) { plainWrite(to, display); });
        const auto codes = [&] { return plainRead(plain, display); };
        const auto xyz = [&] { return bits == 8 ? toXyz<std::uint8_t>(codes()) : toXyz<std::uint16_t>(codes()); };
        in.compare((std::string(format) + ", read").c_str(), [&] { readPicture(format); },
                   {{"X, Y, Z", [&] { xyz(); }}, {"codes", [&] { codes(); }}});
    };
    const auto writePng = [](const DisplayImage& image, const std::string& to) { return writeFileWhole(to, encodePng(image)); };
    const auto writeJpeg = [](const DisplayImage& image, const std::string& to) { return writeFileWhole(to, encodeJpeg(image)); };
    shown("png", 8, writePng, plainPng, readPlainPng);
    shown("jpg", 8, writeJpeg, plainJpeg, readPlainJpeg);
    shown("png16", 16, writePng, plainPng, readPlainPng);
    std::filesystem::remove_all(folder);
    return 0;
}
