#include "engine/node/svbin/file_builder.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

#include "engine/node/encoding/limits.h"
#include "engine/node/svbin/svbin.h"

namespace nemra::node::svbin {

std::uint8_t* FileBuilder::Heap::allocate(std::size_t size) {
    void* const block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return static_cast<std::uint8_t*>(block);
}

void FileBuilder::Heap::deallocate(std::uint8_t* block, std::size_t) { std::free(block); }

void FileBuilder::checkRoom(std::size_t more) const {
    constexpr std::size_t kSpare = 0x10000;  // for tables and padding
    if (more > kMaxFileBytes - kSpare || builder_.GetSize() > kMaxFileBytes - kSpare - more)
        throw std::length_error("the file would be larger than 2 GiB");
}

Buffer FileBuilder::finishFile(fb::Contents type, Offset<void> contents) {
    constexpr std::uint32_t kNotYetKnown = 1;
    fb::FinishFileBuffer(builder_,
                         fb::CreateFile(tables(), static_cast<std::uint16_t>(kSvbinVersion), type, contents, kNotYetKnown));
    flatbuffers::GetMutableRoot<flatbuffers::Table>(builder_.GetBufferPointer())
        ->SetField(fb::File::VT_SIZE, builder_.GetSize(), 0U);
    std::size_t reserved = 0;
    std::size_t front = 0;
    auto* const block = reinterpret_cast<char*>(builder_.ReleaseRaw(reserved, front));
    std::memmove(block, block + front, reserved - front);
    return Buffer::adopt(block, reserved - front);
}

}  // namespace nemra::node::svbin
