// Pictures as results and results as pictures: what one of our files says is read back with the same light in it, what others
// write is understood, and what is damaged is refused.
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <png.h>
#include <unistd.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include "engine/core/image/decode.h"
#include "engine/core/image/image_node.h"
#include "engine/core/image/read_exr.h"
#include "engine/core/image/spectral_layout.h"
#include "engine/core/output/encode.h"
#include "engine/core/output/icc_profile.h"
#include "engine/core/output/write_result.h"
#include "tests/engine/result/made_raw.h"

namespace nemra::test {
namespace {

namespace fs = std::filesystem;

class Pictures : public testing::Test {
protected:
    void SetUp() override { node::registerClasses(); }
    Messages messages_;
};

double sample(const core::Raw& raw, int channel, int x, int y) { return raw.view()->at(channel, x, y, NEMRA_QUANTITY_RAW); }

TEST_F(Pictures, OurOwnExrComesBackWithItsChannels) {
    for (const auto sensor : {FakeScene::Sensor::xyz, FakeScene::Sensor::spectral, FakeScene::Sensor::energy}) {
        FakeScene scene;
        scene.sensor = sensor;
        scene.camera = makeCamera();
        const auto raw = makeRaw(scene, 4);
        const auto again = core::readExr(core::encodeExr(*raw, core::ExrColors::xyz), "a.exr");
        const auto film = again->film();
        ASSERT_EQ(film->channels.size(), raw->film()->channels.size());
        EXPECT_EQ(again->counts().time, 1.5);
        for (int c = 0; c < static_cast<int>(film->channels.size()); ++c) {
            const core::Channel& channel = film->channels[static_cast<std::size_t>(c)];
            const int from = raw->channelIndex(channel.name);
            ASSERT_GE(from, 0) << channel.name;
            const core::Channel& original = raw->film()->channels[static_cast<std::size_t>(from)];
            EXPECT_EQ(channel.kind, original.kind);
            EXPECT_EQ(channel.unit, original.unit);
            EXPECT_NEAR(channel.wavelength, original.wavelength, 1e-15);
            EXPECT_NEAR(channel.bandwidth, original.bandwidth, 1e-15);
            EXPECT_EQ(sample(*again, c, 7, 3), static_cast<float>(sample(*raw, from, 7, 3)));
            EXPECT_EQ(sample(*again, c, 0, 11), static_cast<float>(sample(*raw, from, 0, 11)));
        }
        if (sensor == FakeScene::Sensor::spectral) {
            EXPECT_EQ(film->channels.back().name, "1000 nm") << "by wavelength";
        }
    }
    EXPECT_TRUE(messages_.errors.empty());
}

TEST_F(Pictures, ColoursOfOthersBecomeLuminances) {
    FakeScene scene;
    const auto raw = makeRaw(scene, 4);
    for (const char* const space : {"srgb", "rec2020"}) {
        auto output = std::make_shared<node::Node>(*node::findClass("output", "rgbimage"), "o");
        std::string why;
        ASSERT_TRUE(output->set("color_space", node::Value{std::string(space)}, why)) << why;
        raw->setOutput(output);
        const auto again = core::readExr(core::encodeExr(*raw, core::ExrColors::rgb), "a.exr");
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(sample(*again, c, 5, 9), sample(*raw, c, 5, 9), 2e-5) << space;
    }
}

/// All components of a picture, as code values or radiances.
std::vector<float> numbersOf(core::PictureDecoder& decoder) {
    const core::PictureForm& form = decoder.form();
    const auto pixels = static_cast<std::size_t>(form.width) * static_cast<std::size_t>(form.height);
    std::vector<unsigned char> bytes(form.rowBytes() * static_cast<std::size_t>(form.height));
    decoder.read(bytes);
    decoder.finish();
    std::vector<float> numbers(pixels * static_cast<std::size_t>(form.channels));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        std::uint16_t wide = 0;
        switch (form.samples) {
            case core::Samples::codes8:
                numbers[i] = static_cast<float>(bytes[i]) / 255.0F;
                break;
            case core::Samples::codes16:
                std::memcpy(&wide, bytes.data() + 2 * i, 2);
                numbers[i] = static_cast<float>(wide) / 65535.0F;
                break;
            case core::Samples::floats:
                std::memcpy(&numbers[i], bytes.data() + 4 * i, 4);
                break;
            case core::Samples::rgbe: {
                const unsigned char* const pixel = bytes.data() + i / 3 * 4;
                const double step = pixel[3] == 0 ? 0.0 : std::ldexp(1.0, pixel[3] - 136) / form.exposure;
                numbers[i] = static_cast<float>((pixel[i % 3] + 0.5) * step);
                break;
            }
        }
    }
    return numbers;
}

/// An EXR of one row of four pixels, by the library itself: half floats, and a data window that doesn't begin at 0.
std::vector<char> foreignExr(const std::vector<std::string>& channels, float whiteLuminance) {
    const std::string path = (fs::temp_directory_path() / ("nemra-foreign-" + std::to_string(::getpid()) + ".exr")).string();
    const Imath::Box2i window({10, -3}, {13, -3});
    Imf::Header header(window, window);
    header.compression() = Imf::PIZ_COMPRESSION;
    if (whiteLuminance > 0.0F) Imf::addWhiteLuminance(header, whiteLuminance);
    std::vector<std::vector<half>> planes;
    Imf::FrameBuffer frame;
    planes.reserve(channels.size());
    for (const std::string& name : channels) {
        header.channels().insert(name, Imf::Channel(Imf::HALF));
        const auto first = static_cast<float>(planes.size() + 1);
        planes.push_back({half(first), half(first + 0.25F), half(first + 0.5F), half(first + 0.75F)});
        frame.insert(name, Imf::Slice::Make(Imf::HALF, planes.back().data(), window));
    }
    {
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(frame);
        file.writePixels(1);
    }
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    fs::remove(path);
    return bytes;
}

TEST_F(Pictures, ForeignExrIsUnderstood) {
    const auto rgb = core::readExr(foreignExr({"R", "G", "B", "A"}, 100.0F), "f");
    ASSERT_EQ(rgb->channelIndex("Y"), 1);
    EXPECT_EQ(rgb->width(), 4);
    EXPECT_EQ(rgb->height(), 1);
    EXPECT_NEAR(sample(*rgb, 1, 1, 0), 100.0 * (0.212639 * 1.25 + 0.715169 * 2.25 + 0.072192 * 3.25), 0.01);

    const auto grey = core::readExr(foreignExr({"Y"}, 0.0F), "f");
    EXPECT_NEAR(sample(*grey, 1, 2, 0), 1.5, 1e-6);

    const auto bands =
        core::readExr(foreignExr({"S0.0,55um", "S0.400nm", "S0.1000,0nm", "S1.400nm", "S0.599,584916THz"}, 0.0F), "f");
    ASSERT_EQ(bands->film()->channels.size(), 4U);
    const char* const names[] = {"400 nm", "500 nm", "550 nm", "1000 nm"};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(bands->film()->channels[i].name, names[i]);
    EXPECT_NEAR(bands->film()->channels[2].bandwidth, 250e-9, 1e-15) << "half way to both neighbours";
    EXPECT_EQ(sample(*bands, 0, 0, 0), 2.0);
    EXPECT_EQ(sample(*bands, 2, 3, 0), 1.75);

    const auto filter = core::readExr(foreignExr({"T.500nm", "T.510nm", "T.500nm.600nm", "R", "G", "B"}, 0.0F), "f");
    ASSERT_EQ(filter->film()->channels.size(), 2U);
    EXPECT_EQ(filter->film()->channels[0].unit, "1");
    EXPECT_EQ(filter->quantities().size(), 1U) << "a transmittance is no radiance";

    const auto data = core::readExr(foreignExr({"P.X", "P.Y"}, 0.0F), "f");
    EXPECT_EQ(data->channelIndex("P.Y"), 1);
    EXPECT_EQ(data->film()->channels[0].kind, core::ChannelKind::unknown);
}

TEST(SpectralLayout, NamesAreReadAsPublished) {
    const auto wavelength = [](const char* name) {
        const auto parsed = core::parseLayoutChannel(name);
        return parsed ? parsed->wavelength : 0.0;
    };
    EXPECT_NEAR(wavelength("S0.550,938nm"), 550.938e-9, 1e-18);
    EXPECT_NEAR(wavelength("S0.5,5E+2nm"), 550e-9, 1e-18);
    EXPECT_NEAR(wavelength("T.1,2um"), 1.2e-6, 1e-18);
    EXPECT_NEAR(wavelength("S0.0,5mm"), 5e-4, 1e-15);
    EXPECT_NEAR(wavelength("S3.600THz"), 299792458.0 / 600e12, 1e-15);
    for (const char* const bad :
         {"S4.550nm", "S0.nm", "S0.550", "S0.-550nm", "S0.550xm", "S0.0nm", "T.5nm.x", "R", "S0.1e999nm", "S0."}) {
        EXPECT_EQ(wavelength(bad), 0.0) << bad;
    }
    EXPECT_EQ(core::parseBandLimits("1nm:2nm;3nm:2nm;x;4nm:5nm").size(), 2U);
}

TEST_F(Pictures, HdrComesBackWithinItsPrecision) {
    for (const int width : {5, 20, 300}) {  // plain scanlines, packed ones, runs
        FakeScene scene;
        scene.pixelsWide = width;
        const auto raw = makeRaw(scene, 2);
        const auto file = core::encodeHdr(*raw);
        const auto decoder = core::decodeHdr(file);
        ASSERT_EQ(decoder->form().width, width);
        ASSERT_EQ(decoder->form().height, 12);
        const auto numbers = numbersOf(*decoder);
        for (const auto& [x, y] : {std::pair{0, 0}, std::pair{width - 1, 11}, std::pair{3, 7}}) {
            // Luminance by the weights that Radiance's own programs use for these primaries.
            const float* const rgb = numbers.data() + 3 * (y * width + x);
            const double luminance = 179.0 * (0.265 * rgb[0] + 0.670 * rgb[1] + 0.065 * rgb[2]);
            const double clipped = FakeScene::mean(x, y, 2, 1);
            // X and Z are independent of Y here, so R or B may be negative, which the format can't say.
            if (rgb[0] > 0.02F * rgb[1] && rgb[2] > 0.02F * rgb[1]) {
                EXPECT_NEAR(luminance, clipped, 0.02 * clipped + 0.02);
            }
        }
    }
}

TEST_F(Pictures, AViewGoesIntoTheHdrHeader) {
    FakeScene scene;
    scene.camera = makeCamera();
    const auto file = core::encodeHdr(*makeRaw(scene, 1));
    const std::string text(file.begin(), file.end());
    EXPECT_TRUE(text.starts_with("#?RADIANCE\n"));
    // A film of 36 mm x 24 mm behind 50 mm: 2 atan(18/50) and 2 atan(12/50).
    EXPECT_NE(text.find("\nVIEW= -vtv -vp 0 0 0 -vd 0 0 1 -vu 0 1 0 -vh 39.5977"), std::string::npos) << text.substr(0, 200);
    EXPECT_NE(text.find(" -vv 26.9914"), std::string::npos);
    EXPECT_NE(text.find("\nEXPOSURE=1\n"), std::string::npos);
}

/// Light of a code value by the profile itself, relative to its white, D50.
double throughProfile(const std::vector<char>& profile, double code) {
    cmsHPROFILE from = cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
    cmsHPROFILE to = cmsCreateXYZProfile();
    cmsHTRANSFORM transform =
        cmsCreateTransform(from, TYPE_RGB_DBL, to, TYPE_XYZ_DBL, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
    const double rgb[3] = {code, code, code};
    double xyz[3] = {};
    cmsDoTransform(transform, rgb, xyz, 1);
    cmsDeleteTransform(transform);
    cmsCloseProfile(to);
    cmsCloseProfile(from);
    return xyz[1];
}

TEST(IccProfile, FitsTheCurveThatWasUsed) {
    for (const char* const name : {"srgb", "rec2020", "xyz"}) {
        const core::ColorSpace& space = core::colorSpace(name);
        const auto profile = core::iccProfile(space, {});
        EXPECT_EQ(profile, core::iccProfile(space, {}));
        EXPECT_EQ(profile.size() % 4, 0U);
        for (const double light : {0.001, 0.01, 0.18, 0.5, 1.0}) {
            EXPECT_NEAR(throughProfile(profile, space.encode(light)), light, 2e-4) << name << " " << light;
            EXPECT_NEAR(space.decode(space.encode(light)), light, 1e-9);
        }
        const auto power = core::iccProfile(space, {2.2});
        EXPECT_NEAR(throughProfile(power, std::pow(0.18, 1.0 / 2.2)), 0.18, 2e-4) << name;
    }
    EXPECT_NE(core::iccProfile(core::colorSpace("srgb"), {}), core::iccProfile(core::colorSpace("rec2020"), {}));
}

TEST_F(Pictures, PngAndJpegShowTheSamePictureWithTheirProfile) {
    FakeScene scene;
    const auto raw = makeRaw(scene, 8);
    const auto eight = core::makeDisplayImage(*raw, false);
    const auto sixteen = core::makeDisplayImage(*raw, false, 16);
    const auto png = core::encodePng(eight);
    const auto png16 = core::encodePng(sixteen);
    const auto jpeg = core::encodeJpeg(eight);
    const auto a = numbersOf(*core::decodePng(png));
    const auto b = numbersOf(*core::decodePng(png16));
    const auto c = numbersOf(*core::decodeJpeg(jpeg));
    ASSERT_EQ(a.size(), 720U);
    ASSERT_EQ(b.size(), 720U);
    ASSERT_EQ(c.size(), 720U);
    double difference = 0.0;
    for (std::size_t i = 0; i < 720; ++i) {
        EXPECT_EQ(std::lround(a[i] * 255.0F), eight.bytes[i]);
        EXPECT_NEAR(a[i], b[i], 0.5 / 255 + 1e-5);
        difference += std::abs(c[i] - a[i]) / 720;
    }
    EXPECT_LT(difference, 0.03) << "noise at quality 95";
    const std::string file(jpeg.begin(), jpeg.end());
    const auto profile = core::iccProfile(core::colorSpace("srgb"), {});
    EXPECT_NE(file.find(std::string("ICC_PROFILE\0\1\1", 14) + std::string(profile.begin(), profile.end())), std::string::npos);
}

std::shared_ptr<node::Node> inlineImage(int width, int height, int channels, const char* space, std::vector<float> values) {
    auto image = std::make_shared<node::Node>(*node::findClass("image", "inline"), "i");
    std::string why;
    EXPECT_TRUE(image->set("width", node::Value{std::int32_t{width}}, why)) << why;
    EXPECT_TRUE(image->set("height", node::Value{std::int32_t{height}}, why)) << why;
    EXPECT_TRUE(image->set("channels", node::Value{std::int32_t{channels}}, why)) << why;
    EXPECT_TRUE(image->set("color_space", node::Value{std::string(space)}, why)) << why;
    EXPECT_TRUE(image->setRawSlot("pixels", node::Value{std::move(values)}, why)) << why;
    return image;
}

TEST_F(Pictures, ImageNodesBecomeResults) {
    const auto colors = core::rawFromImage(*inlineImage(2, 1, 3, "linear_srgb", {1, 1, 1, 0, 10, 0}));
    ASSERT_NE(colors, nullptr);
    EXPECT_NEAR(sample(*colors, 1, 0, 0), 1.0, 1e-6);
    EXPECT_NEAR(sample(*colors, 0, 0, 0), 0.3127 / 0.3290, 1e-6);
    EXPECT_NEAR(sample(*colors, 1, 1, 0), 7.15169, 1e-4);
    const auto coded = core::rawFromImage(*inlineImage(1, 1, 1, "srgb", {0.5F}));
    EXPECT_NEAR(sample(*coded, 1, 0, 0), 0.2140411, 1e-6);
    const auto xyz = core::rawFromImage(*inlineImage(1, 2, 3, "xyz", {1, 2, 3, 4, 5, 6}));
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(sample(*xyz, c, 0, 1), 4.0 + c, 1e-9);
    const auto data = core::rawFromImage(*inlineImage(1, 1, 2, "data", {-1.0F, 7.0F}));
    EXPECT_EQ(sample(*data, 0, 0, 0), -1.0);
    EXPECT_EQ(data->channelIndex("1"), 1);

    auto spectral = inlineImage(1, 1, 2, "spectral", {5.0F, 6.0F});
    std::string why;
    node::Table wavelengths = *spectral->table("wavelengths");
    ASSERT_EQ(wavelengths.columns.size(), 1U);
    wavelengths.columns[0].cells = {node::Value{700.0}, node::Value{500.0}};
    wavelengths.rows = 2;
    ASSERT_TRUE(spectral->set("wavelengths", node::Value{std::make_shared<const node::Table>(wavelengths)}, why)) << why;
    const auto bands = core::rawFromImage(*spectral);
    ASSERT_NE(bands, nullptr);
    EXPECT_EQ(bands->film()->channels[0].name, "500 nm");
    EXPECT_EQ(sample(*bands, 0, 0, 0), 6.0);
    EXPECT_TRUE(messages_.errors.empty());

    EXPECT_EQ(core::rawFromImage(*inlineImage(2, 2, 3, "srgb", {1, 2, 3})), nullptr) << "too few numbers";
    EXPECT_EQ(core::rawFromImage(*inlineImage(65536, 65536, 4096, "data", {1})), nullptr) << "a product that overflows";
    EXPECT_EQ(messages_.errors.size(), 2U);
}

TEST_F(Pictures, EmbeddedFilesOfEveryFormatAreReadAndDamagedOnesRefused) {
    FakeScene scene;
    const auto raw = makeRaw(scene, 8);
    const auto display = core::makeDisplayImage(*raw, false);
    const std::vector<std::pair<const char*, std::vector<char>>> files{
        {"png", core::encodePng(display)},
        {"png16", core::encodePng(core::makeDisplayImage(*raw, false, 16))},
        {"jpg", core::encodeJpeg(display)},
        {"exr", core::encodeExr(*raw)},
        {"hdr", core::encodeHdr(*raw)}};
    std::string why;
    for (const auto& [name, bytes] : files) {
        node::Node image(*node::findClass("image", "embedded"), name);
        ASSERT_TRUE(image.setRawSlot("data", node::Value{bytes}, why)) << why;
        const auto read = core::rawFromImage(image);
        ASSERT_NE(read, nullptr) << name;
        EXPECT_EQ(read->width(), 20);
        EXPECT_EQ(read->height(), 12);
        ASSERT_TRUE(image.set("flip_vertically", node::Value{true}, why));
        const auto flipped = core::rawFromImage(image);
        ASSERT_NE(flipped, nullptr) << name;
        EXPECT_EQ(sample(*flipped, 1, 4, 1), sample(*read, 1, 4, 10)) << name;
        EXPECT_TRUE(messages_.errors.empty()) << name;
        for (std::size_t size = 0; size < bytes.size(); size += 1 + size / 8) {
            messages_.errors.clear();
            ASSERT_TRUE(image.setRawSlot(
                "data", node::Value{std::vector<char>(bytes.begin(), bytes.begin() + std::ptrdiff_t(size))}, why));
            EXPECT_EQ(core::rawFromImage(image), nullptr) << name << " cut at " << size;
            EXPECT_EQ(messages_.errors.size(), 1U) << name << " cut at " << size;
        }
        messages_.errors.clear();
    }
}

/// A PNG by its own library, of any numbers.
std::vector<char> pngOf(int width, int height, int channels, int bits, bool interlaced) {
    std::vector<char> file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp to, png_bytep data, png_size_t size) {
            auto* const bytes = static_cast<std::vector<char>*>(png_get_io_ptr(to));
            bytes->insert(bytes->end(), data, data + size);
        },
        nullptr);
    const int colors[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA};
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), bits, colors[channels - 1],
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 1);
    png_write_info(png, info);
    const auto rowBytes = static_cast<std::size_t>(width * channels * bits / 8);
    std::vector<unsigned char> bytes(rowBytes * static_cast<std::size_t>(height));
    std::mt19937 random(7);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
    std::vector<png_bytep> rows;
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) rows.push_back(bytes.data() + rowBytes * y);
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

/// The film of a picture against one number after the other: what goes through tables, several threads, blocks of rows and tiles
/// of columns comes out to the bit, in its place.
void expectNumbers(const std::vector<char>& file, core::PictureDecoder& decoder, const std::string& space, double scale,
                   bool flipped, const std::string& what) {
    const core::PictureForm form = decoder.form();
    const auto numbers = numbersOf(decoder);
    const auto film = core::rawFromPictureFile(file, "f", space, scale, flipped)->film();
    const bool isData = space == "data";
    const core::ColorSpace& colors = space == "auto" && form.colors ? *form.colors : core::colorSpace("srgb");
    const bool encoded = space == "srgb" || (space == "auto" && form.encoded);
    const auto count = static_cast<std::size_t>(form.channels);
    const auto width = static_cast<std::size_t>(form.width);
    const auto height = static_cast<std::size_t>(form.height);
    ASSERT_EQ(film->channels.size(), isData ? count : 3 + (count + 1) % 2) << what;
    ASSERT_EQ(film->samples.size(), width * height) << what;
    const std::size_t reference = isData ? count : 1;
    std::size_t wrong = 0;
    for (std::size_t pixel = 0; pixel < width * height; ++pixel) {
        const std::size_t x = pixel / height;
        const std::size_t y = pixel % height;
        const float* const from = numbers.data() + ((flipped ? height - 1 - y : y) * width + x) * count;
        std::vector<double> wanted(from, from + count);
        if (isData) {
            for (double& number : wanted) number *= scale;
        } else {
            const auto light = [&](std::size_t c) { return encoded ? colors.decode(wanted[c]) : wanted[c]; };
            const auto xyz = count < 3 ? colors.toXyz(light(0), light(0), light(0)) : colors.toXyz(light(0), light(1), light(2));
            std::vector<double> cells;
            for (const double number : xyz) cells.push_back(scale * form.luminanceOfWhite * number);
            if (count % 2 == 0) cells.push_back(wanted.back());
            wanted = cells;
        }
        double value = reference < wanted.size() ? wanted[reference] : 0.0;
        if (isData) {
            for (const double number : wanted) value += number / static_cast<double>(count);
        }
        for (std::size_t c = 0; c < wanted.size(); ++c) wrong += film->high[pixel * wanted.size() + c] != wanted[c];
        wrong += film->squares.at(pixel) != core::squareSum(value * value) || film->samples[pixel] != 1;
        wrong += film->depth[pixel] != 0.0 || film->depthSamples[pixel] != 0 || film->low[pixel] != 0.0;
    }
    EXPECT_EQ(wrong, 0U) << what;
}

TEST_F(Pictures, EveryPixelIsThatOfAStraightforwardReader) {
    for (const auto& [width, height] : {std::pair{37, 5}, std::pair{401, 700}, std::pair{700, 401}}) {
        const bool isLarge = width > 100;  // several threads, and a film on pages that nobody has touched
        for (const int channels : {1, 2, 3, 4}) {
            for (const int bits : {8, 16}) {
                for (const char* const space : {"auto", "data", "linear_srgb"}) {
                    if (isLarge && channels != 3 && *space != 'a') continue;
                    const bool flipped = bits == 16 || channels == 2;
                    const std::string what =
                        std::to_string(width) + " " + std::to_string(channels) + " " + std::to_string(bits) + space;
                    const auto file = pngOf(width, height, channels, bits, channels == 4);
                    expectNumbers(file, *core::decodePng(file), space, channels == 1 ? 2.5 : 1.0, flipped, what);
                }
            }
        }
        FakeScene scene;
        scene.pixelsWide = width;
        scene.pixelsHigh = height;
        const auto raw = makeRaw(scene, 1);
        const auto hdr = core::encodeHdr(*raw);
        const auto jpeg = core::encodeJpeg(core::makeDisplayImage(*raw, false));
        for (const char* const space : {"auto", "data", "srgb"}) {
            expectNumbers(hdr, *core::decodeHdr(hdr), space, 1.0, isLarge, std::string("hdr ") + space);
            expectNumbers(jpeg, *core::decodeJpeg(jpeg), space, 1.0, !isLarge, std::string("jpg ") + space);
        }
    }
}

TEST_F(Pictures, TablesAreTidyOrGrids) {
    FakeScene scene;
    scene.pixelsWide = 3;
    scene.pixelsHigh = 2;
    const auto raw = makeRaw(scene, 1);
    const auto text = [&](const char* format) {
        const auto bytes = core::encodeResult(*raw, format, "test");
        return bytes ? std::string(bytes->span().begin(), bytes->span().end()) : std::string();
    };
    auto output = std::make_shared<node::Node>(*node::findClass("output", "table"), "t");
    std::string why;
    raw->setOutput(output);
    EXPECT_TRUE(text("csv").starts_with("x,y,X [cd.m^-2],Y [cd.m^-2],Z [cd.m^-2]\n0,0,"));
    EXPECT_EQ(text("png"), "") << "a table isn't a picture";
    auto grid = std::make_shared<node::Node>(*node::findClass("output", "table"), "t");
    ASSERT_TRUE(grid->set("layout", node::Value{std::string("grid")}, why));
    ASSERT_TRUE(grid->set("channels", node::Value{std::string(" Y ")}, why));
    ASSERT_TRUE(grid->set("quantity", node::Value{std::string("sensor_irradiance")}, why));
    ASSERT_TRUE(grid->set("separator", node::Value{std::string("semicolon")}, why));
    ASSERT_TRUE(grid->set("digits", node::Value{std::int32_t{17}}, why));
    raw->setOutput(grid);
    std::string wanted = "Y [lx]\ny \\ x;0;1;2\n";
    for (int y = 0; y < 2; ++y) {
        wanted += std::to_string(y);
        for (int x = 0; x < 3; ++x) {
            std::string number = node::toText(FakeScene::sample(x, y, 0, 1) * 0.25 * (x == 0 ? 0.5 : 1.0));
            std::replace(number.begin(), number.end(), '.', ',');
            wanted += ";" + number;
        }
        wanted += "\n";
    }
    EXPECT_EQ(text("csv"), wanted);
    auto missing = std::make_shared<node::Node>(*node::findClass("output", "table"), "t");
    ASSERT_TRUE(missing->set("channels", node::Value{std::string("no")}, why));
    raw->setOutput(missing);
    messages_.errors.clear();
    EXPECT_EQ(text("csv"), "");
    EXPECT_EQ(messages_.errors.size(), 1U);
}

TEST_F(Pictures, TheLocaleChangesNoFile) {
    FakeScene scene;
    scene.sensor = FakeScene::Sensor::spectral;
    scene.camera = makeCamera();
    const auto raw = makeRaw(scene, 3);
    const auto path = (fs::temp_directory_path() / ("nemra-locale-" + std::to_string(::getpid()))).string();
    const auto written = [&](const char* format) {
        EXPECT_TRUE(core::writeRaw(*raw, path, format)) << format;
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    for (const char* const format : {"svraw", "exr", "hdr", "csv"}) {
        const std::string plain = written(format);
        bool found = false;
        for (const char* const name : {"de_DE.UTF-8", "fr_FR.UTF-8"}) found = found || std::setlocale(LC_NUMERIC, name);
        EXPECT_EQ(written(format), plain) << format;
        std::setlocale(LC_NUMERIC, before.c_str());
        if (!found) GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    fs::remove(path);
}

}  // namespace
}  // namespace nemra::test
