# How the tree is compiled: language level, warnings, sanitizers, and the tools that keep builds quick.
include_guard()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

# ccache needs to be told that a precompiled header is judged by its content. That differs each time it is made; it is
# found again, and with it all that uses it, where the compiler's own list of files tells what it was made of.
find_program(ZR_CCACHE ccache)
if(ZR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_DEPEND=1
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${ZR_CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        add_compile_options(-fpch-preprocess)
    else()
        add_compile_options(SHELL:-Xclang\ -fno-pch-timestamp)
    endif()
endif()

find_program(ZR_MOLD mold)
find_program(ZR_LLD ld.lld)
if(ZR_MOLD AND NOT ZR_SANITIZE)
    add_link_options(-fuse-ld=mold)
elseif(ZR_LLD)
    add_link_options(-fuse-ld=lld)
endif()

if(NOT MSVC)
    add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
        $<$<BOOL:${ZR_WARNINGS_AS_ERRORS}>:-Werror>)
    # A framework's own calls are not meant to be interposed; this lets them be inlined.
    add_compile_options(-fno-semantic-interposition)
endif()
add_compile_definitions(QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
    QT_DISABLE_DEPRECATED_BEFORE=0x060400 QT_USE_QSTRINGBUILDER)

if(ZR_SANITIZE)
    add_compile_options(-fsanitize=${ZR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${ZR_SANITIZE})
endif()

# Fuzzing is optimised, and checks all the same what a debug build checks. All code tells the fuzzer where it has been.
if(ZR_BUILD_FUZZERS)
    add_compile_definitions(QT_FORCE_ASSERTS)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
