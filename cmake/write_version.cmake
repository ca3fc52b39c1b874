# Run at every build: writes the version's source file when the commit has changed, so that the text follows HEAD without a new
# configuration. Input: SOURCE (source tree), OUTPUT (file to write), VERSION (a.b.c). Outside a repository the file SOURCE_VERSION
# gives the digits, which `git archive` writes into it; without them they are zeros.
set(digits "")
if(EXISTS "${SOURCE}/.git")
    execute_process(COMMAND git -C "${SOURCE}" rev-parse --short=12 HEAD
        OUTPUT_VARIABLE digits OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(digits STREQUAL "" AND EXISTS "${SOURCE}/SOURCE_VERSION")
    file(READ "${SOURCE}/SOURCE_VERSION" digits)
endif()
string(REGEX MATCH "^[0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f]" digits "${digits}")
if(digits STREQUAL "")
    set(digits "000000000000")
endif()

set(text "// Written by cmake/write_version.cmake.
#include \"engine/core/api/version.h\"

namespace nemra::core {
const char* const kVersionText = \"Nemra 2024 R1 (${VERSION}-${digits})\";
}
")
set(before "")
if(EXISTS "${OUTPUT}")
    file(READ "${OUTPUT}" before)
endif()
if(NOT before STREQUAL text)
    file(WRITE "${OUTPUT}" "${text}")
endif()
