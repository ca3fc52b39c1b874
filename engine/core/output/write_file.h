/// Writing a file whole or not at all.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace nemra::core {

/// A file that gets its name when it is whole: its bytes go into a file in the same folder, which has no name where the file
/// system can do without, and which is flushed to the disk and then put in place, so that at any moment the name stands for the
/// old file or the new one. A process that is killed meanwhile leaves nothing behind, but for a whole file ".nemra-...part" if
/// that happens just before it takes an old file's place, or half of one where the file system wants names. A name that stands
/// for a device or a pipe is written to directly.
class NewFile {
public:
    /// Whether that went well shows at the next step.
    explicit NewFile(std::string path);
    /// Without finish() there is no new file, and the old one is as it was.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// False if this or an earlier step failed. Says nothing, so that any thread can call it; one at a time.
    bool append(std::span<const char> bytes) noexcept;
    /// On failure of any step false, one error message with the system's reason, no file left over, the old file as it was.
    bool finish();

private:
    void makeTemporary();
    /// A file of no name; false where there are none.
    bool makeNameless() noexcept;
    /// Calls make(name) for names that nobody should have until one wasn't taken. False, with errno, if that failed.
    template <class Make>
    bool withOwnName(Make&& make);
    /// Lets the disk begin, so that it doesn't have all to do at the end.
    void startFlush() noexcept;
    bool flushAndRename();
    /// Puts a nameless file in place, or under a temporary name where there is a file already.
    bool giveName();
    bool fail(const char* step, int reason) noexcept;

    std::string path_;       ///< as it was asked for
    std::string target_;     ///< the file that it leads to
    std::string temporary_;  ///< empty: there is none
    bool isDirect_ = false;  ///< what is written goes where it shall be at once
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
    std::uint64_t started_ = 0;  ///< bytes that the system was asked to bring to the disk
    const char* failedStep_ = nullptr;
    int reason_ = 0;
};

/// As one NewFile of these bytes.
bool writeFileWhole(const std::string& path, std::span<const char> bytes);

/// The system's reason why writeFileWhole would fail now, as far as that shows without writing; "" for none.
std::string whyNotWritable(const std::string& path);

}  // namespace nemra::core
