// A file comes under its name when it is whole, whatever happens to the name meanwhile.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "engine/core/output/in_turn.h"
#include "engine/core/output/write_file.h"
#include "tests/engine/result/made_raw.h"

namespace nemra::test {
namespace {

namespace fs = std::filesystem;

class WriteFile : public testing::Test {
protected:
    void SetUp() override {
        folder_ = fs::temp_directory_path() / ("nemra-write-file-" + std::to_string(::getpid()));
        fs::create_directory(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::size_t entries() const { return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), {})); }
    /// Whether files can do without a name here.
    bool hasNameless() const {
        const int file = ::open(folder_.c_str(), O_WRONLY | O_TMPFILE, 0600);
        if (file >= 0) ::close(file);
        return file >= 0;
    }
    static std::string contents(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    fs::path folder_;
    Messages messages_;
};

TEST_F(WriteFile, PiecesBecomeAFileAtTheEnd) {
    const auto name = folder_ / "a";
    std::ofstream(name) << "old";
    {
        core::NewFile file(name);
        EXPECT_TRUE(file.append(std::string("new ")));
        EXPECT_EQ(contents(name), "old");
        const std::string much(20'000'000, 'x');
        EXPECT_TRUE(file.append(much));
        EXPECT_TRUE(file.append({}));
        EXPECT_TRUE(file.finish());
        EXPECT_EQ(contents(name), "new " + much);
    }
    {
        core::NewFile given(folder_ / "b");
        given.append(std::string("never finished"));
        EXPECT_EQ(entries(), hasNameless() ? 1U : 2U);
    }
    EXPECT_EQ(entries(), 1U);
    EXPECT_TRUE(messages_.errors.empty());
}

// With a name and without: a new file has the mode that others get, one that takes an old file's place has that of the old one.
TEST_F(WriteFile, ModesAndLinksStay) {
    const auto modeOf = [](const fs::path& path) { return static_cast<unsigned>(fs::status(path).permissions()); };
    std::ofstream(folder_ / "usual") << "x";
    EXPECT_TRUE(core::writeFileWhole(folder_ / "new", std::string("new")));
    EXPECT_EQ(modeOf(folder_ / "new"), modeOf(folder_ / "usual"));
    fs::permissions(folder_ / "usual", fs::perms(0604));
    fs::create_symlink("usual", folder_ / "link");
    fs::create_symlink("nowhere", folder_ / "dangling");
    EXPECT_TRUE(core::writeFileWhole(folder_ / "link", std::string("new")));
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
    EXPECT_EQ(contents(folder_ / "usual"), "new");
    EXPECT_EQ(modeOf(folder_ / "usual"), 0604U);
    EXPECT_TRUE(core::writeFileWhole(folder_ / "dangling", std::string("new")));
    EXPECT_EQ(contents(folder_ / "dangling"), "new");
    EXPECT_EQ(entries(), 4U);
}

TEST_F(WriteFile, ANameThatChangesMeanwhileIsRefusedOnce) {
    const auto name = folder_ / "sub" / "a";
    fs::create_directory(folder_ / "sub");
    core::NewFile file(name);
    EXPECT_TRUE(file.append(std::string("new")));
    fs::create_directory(name);
    EXPECT_FALSE(file.finish());
    ASSERT_EQ(messages_.errors.size(), 1U);
    EXPECT_NE(messages_.errors[0].find("Is a directory"), std::string::npos) << messages_.errors[0];
    EXPECT_FALSE(file.append(std::string("more")));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "sub"), {}), 1) << "nothing but the folder of that name";

    messages_.errors.clear();
    core::NewFile lost(folder_ / "sub" / "b");
    fs::remove_all(folder_ / "sub");
    EXPECT_TRUE(lost.append(std::string("new")));
    EXPECT_FALSE(lost.finish());
    ASSERT_EQ(messages_.errors.size(), 1U);
    EXPECT_NE(messages_.errors[0].find("No such file or directory"), std::string::npos) << messages_.errors[0];
    EXPECT_EQ(entries(), 0U);
}

TEST(InTurn, PiecesKeepTheirOrderAndEndWhereTheyMust) {
    for (const std::size_t count : {0U, 1U, 2U, 500U}) {
        std::string all;
        core::inTurn(
            count, [](std::size_t i, std::vector<char>& piece) { piece.assign(1 + i % 7, static_cast<char>('a' + i % 26)); },
            [&](const std::vector<char>& piece) {
                all.append(piece.begin(), piece.end());
                return true;
            });
        std::string wanted;
        for (std::size_t i = 0; i < count; ++i) wanted.append(1 + i % 7, static_cast<char>('a' + i % 26));
        EXPECT_EQ(all, wanted);
    }
    int given = 0;
    core::inTurn(
        1000, [](std::size_t, std::vector<char>&) {}, [&](const std::vector<char>&) { return ++given < 10; });
    EXPECT_EQ(given, 10);
    const auto failing = [](std::size_t i, std::vector<char>&) {
        if (i == 50) throw std::bad_alloc();
    };
    given = 0;
    EXPECT_THROW(core::inTurn(1000, failing, [&](const std::vector<char>&) { return ++given > 0; }), std::bad_alloc);
    EXPECT_LE(given, 50);
    EXPECT_THROW(core::inTurn(
                     1000, [](std::size_t, std::vector<char>&) {}, [](const std::vector<char>&) -> bool { throw 7; }),
                 int);
}

}  // namespace
}  // namespace nemra::test
