/// How the JPEG library's faults become ours, for reading and writing alike.
#pragma once

#include <cstdio>
// The library's header takes FILE and size_t for granted.
#include <jpeglib.h>

#include <csetjmp>

namespace nemra::core {

/// The library leaves by longjmp on a fault, so nothing with a destructor may be made below a setjmp.
struct JpegFaults {
    jpeg_error_mgr manager;  // first, so that the library's pointer leads here
    std::jmp_buf jump;
    char text[JMSG_LENGTH_MAX];
};

/// For the manager's error_exit: keeps the library's words in `text` and jumps.
[[noreturn]] inline void leaveJpeg(j_common_ptr info) {
    auto* const faults = reinterpret_cast<JpegFaults*>(info->err);
    info->err->format_message(info, faults->text);
    std::longjmp(faults->jump, 1);
}

}  // namespace nemra::core
