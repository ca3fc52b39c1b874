/// Writing a file whole or not at all.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace nemra::core {

/// A file that gets its name when it is whole: its bytes go into a temporary file beside it, which is flushed to the disk and
/// then renamed, so that at any moment the name stands for the old file or the new one. A name that stands for a device or a pipe
/// is written to directly.
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
    /// Lets the disk begin, so that it doesn't have all to do at the end.
    void startFlush() noexcept;
    bool flushAndRename();
    bool fail(const char* step, int reason) noexcept;

    std::string path_;       ///< as it was asked for
    std::string target_;     ///< the file that it leads to
    std::string temporary_;  ///< empty: there is none
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
