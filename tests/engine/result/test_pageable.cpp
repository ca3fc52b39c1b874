// Results that are kept stand where the system can put them on disk, and are the same there.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "engine/common/slot_table.h"
#include "engine/core/film/pageable.h"
#include "engine/core/result/svraw.h"
#include "module/flat/nemra_raw.h"
#include "tests/engine/result/made_raw.h"

namespace nemra::test {
namespace {

/// kB, of this process by the name in /proc.
long statusOf(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name + ":")) return std::stol(line.substr(name.size() + 1));
    }
    return -1;
}

/// Whether an address lies in a mapping of a file that has no name any more.
bool standsOnFile(const void* address) {
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t begin = 0, end = 0;
        char dash = 0;
        std::istringstream(line) >> std::hex >> begin >> dash >> end;
        if (place >= begin && place < end) return line.ends_with("(deleted)") && line.find(" rw-s ") != std::string::npos;
    }
    return false;
}

/// 512 x 512 pixels, 21 MB.
std::shared_ptr<core::Raw> makeLarge() {
    FakeScene scene;
    scene.pixelsWide = 512;
    scene.pixelsHigh = 512;
    return makeRaw(scene, 1);
}

/// What a process holds in memory falls when large copies are put out of it, and their numbers come back.
TEST(Pageable, LargeCopiesLeaveMemoryAndComeBack) {
    std::vector<nemra_raw_t*> kept;
    const auto reference = makeLarge();
    for (int i = 0; i < 3; ++i) {
        auto* original = publish<nemra_raw_t>(makeLarge());
        kept.push_back(nemraRawCopy(original));
        nemraRawRelease(&original);  // as a renderer's result goes when a newer one comes
    }
    const auto filmOf = [](nemra_raw_t* handle) { return find<core::Raw>(handle)->film(); };
    if (!standsOnFile(filmOf(kept[0])->high.data())) GTEST_SKIP() << "the temporary directory takes no such files";
    const long before = statusOf("RssFile") + statusOf("RssShmem") + statusOf("RssAnon");
    for (nemra_raw_t* handle : kept) {
        const auto film = filmOf(handle);
        EXPECT_TRUE(standsOnFile(film->squares.lower.data()));
        const auto putOut = [](const auto& array) {
            const auto bytes = array.size() * sizeof(array[0]);
            auto* const begin = const_cast<void*>(static_cast<const void*>(array.data()));
            if (bytes < PagedAllocator<char>::kLeast) return;
            // What memory of its own would lose, a file keeps.
            ASSERT_EQ(::madvise(begin, bytes, MADV_DONTNEED), 0);
        };
        putOut(film->high);
        putOut(film->low);
        putOut(film->squares.upper);
        putOut(film->squares.lower);
        putOut(film->depth);
        putOut(film->samples);
    }
    const long after = statusOf("RssFile") + statusOf("RssShmem") + statusOf("RssAnon");
    EXPECT_LT(after, before - 3 * 18000L);
    for (nemra_raw_t*& handle : kept) {
        EXPECT_TRUE(sameFilm(*reference->film(), *filmOf(handle)));
        nemraRawRelease(&handle);
    }
}

TEST(Pageable, CopiesShareAndSumsStandWhereTheirPartsDo) {
    auto* original = publish<nemra_raw_t>(makeLarge());
    nemra_raw_t* first = nemraRawCopy(original);
    nemra_raw_t* second = nemraRawCopy(original);
    nemra_raw_t* third = nemraRawCopy(first);
    const auto film = [](nemra_raw_t* handle) { return find<core::Raw>(handle)->film(); };
    EXPECT_EQ(film(first), film(second));
    EXPECT_EQ(film(first), film(third));
    EXPECT_TRUE(core::isPageable(*film(first)));
    EXPECT_TRUE(find<core::Raw>(first)->view()->values.get_allocator().paged);
    ASSERT_TRUE(nemraRawAdd(first, second));
    EXPECT_NE(film(first), film(second));
    EXPECT_TRUE(core::isPageable(*film(first)));
    EXPECT_EQ(film(first)->samples[5], 2U);
    EXPECT_EQ(film(second)->samples[5], 1U);
    const Buffer file = core::writeSvraw(*find<core::Raw>(first));
    const auto read = core::readSvraw(file.bytes(), "a");
    ASSERT_NE(read, nullptr);
    EXPECT_TRUE(core::isPageable(*read->film()));
    EXPECT_TRUE(sameFilm(*read->film(), *film(first)));
    for (nemra_raw_t** handle : {&original, &first, &second, &third}) nemraRawRelease(handle);

    FakeScene small;
    auto* little = publish<nemra_raw_t>(makeRaw(small, 1));
    nemra_raw_t* copy = nemraRawCopy(little);
    EXPECT_FALSE(core::isPageable(*film(copy)));
    nemraRawRelease(&little);
    nemraRawRelease(&copy);
}

/// Pages that are zeros anyway are left alone, and no others are taken for zeros.
TEST(Pageable, ZerosAreZerosWhateverStoodThere) {
    constexpr std::size_t count = std::size_t{1} << 20;
    using Vector = PagedVector<double>;
    const auto isZero = [](const Vector& v, std::size_t from) {
        return v.size() == count &&
               std::all_of(v.begin() + static_cast<std::ptrdiff_t>(from), v.end(), [](double n) { return n == 0.0; });
    };
    const long before = statusOf("RssFile") + statusOf("RssAnon");
    Vector fresh(count, PagedAllocator<double>(true));
    EXPECT_LT(statusOf("RssFile") + statusOf("RssAnon"), before + 4096) << "8 MB of zeros";
    EXPECT_TRUE(isZero(fresh, 0));
    std::fill(fresh.begin(), fresh.end(), 7.0);
    fresh.resize(10);
    fresh.resize(count);
    EXPECT_TRUE(isZero(fresh, 10));
    std::fill(fresh.begin(), fresh.end(), 7.0);
    Vector moved = std::move(fresh);
    moved.clear();
    moved.resize(count);
    EXPECT_TRUE(isZero(moved, 0));

    Vector grown(PagedAllocator<double>(true));
    grown.reserve(count);
    grown.resize(5);
    grown.assign(20, 7.0);
    grown.pop_back();
    grown.resize(count);
    EXPECT_TRUE(isZero(grown, 19));
    Vector other(count, 7.0, PagedAllocator<double>(true));
    other.swap(grown);
    grown.clear();
    grown.resize(count);
    EXPECT_TRUE(isZero(grown, 0));
    const Vector copy = other;
    other.assign(3, 7.0);
    other = copy;
    other.resize(count / 2);
    other.resize(count);
    EXPECT_TRUE(isZero(other, 19));
}

/// Without a temporary directory, or where files may not be large, memory is as always, and nothing is said.
TEST(Pageable, OrdinaryMemoryTakesThePlaceOfFiles) {
    const auto works = [] {
        Messages messages;
        const auto raw = makeLarge();
        raw->makePageable();
        EXPECT_TRUE(sameFilm(*raw->film(), *makeLarge()->film()));
        EXPECT_FALSE(standsOnFile(raw->film()->high.data()));
        EXPECT_TRUE(messages.errors.empty() && messages.others.empty());
    };
    const char* const before = std::getenv("TMPDIR");
    const std::string kept = before ? before : "";
    ::setenv("TMPDIR", "/nowhere/at/all", 1);
    works();
    ::setenv("TMPDIR", "/dev/shm", 1);  // files that are memory themselves
    works();
    if (before) {
        ::setenv("TMPDIR", kept.c_str(), 1);
    } else {
        ::unsetenv("TMPDIR");
    }
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit less{1 << 20, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &less), 0);
    works();
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace
}  // namespace nemra::test
