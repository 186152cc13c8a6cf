# Settings that every target of the project shares, carried by one interface library.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

add_library(vornic-settings INTERFACE)
target_compile_features(vornic-settings INTERFACE cxx_std_20)
target_include_directories(vornic-settings INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(vornic-settings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<BOOL:${VORNIC_WERROR}>:-Werror>
    # GCC 12 takes an optional or variant that is moved from for one that was never set, and two
    # short strings that are joined for overlapping ones.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized -Wno-restrict>)
# File offsets and inode numbers are 64 bits wide on every machine.
target_compile_definitions(vornic-settings INTERFACE _FILE_OFFSET_BITS=64)

if(VORNIC_REPRODUCIBLE)
    target_compile_options(vornic-settings INTERFACE "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
endif()

if(VORNIC_SANITIZE)
    target_compile_options(vornic-settings INTERFACE
        -fsanitize=${VORNIC_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vornic-settings INTERFACE -fsanitize=${VORNIC_SANITIZE})
endif()

if(VORNIC_FUZZ)
    target_compile_options(vornic-settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

# A short run is mostly loading: without the C++ runtime and pugixml among the shared libraries it
# takes about a quarter less time. Sanitizers want theirs shared.
add_library(vornic-program-settings INTERFACE)
# A program loads the libraries that it uses, not all that the core was built with.
target_link_options(vornic-program-settings INTERFACE -Wl,--as-needed)
set(VORNIC_PUGIXML pugixml::pugixml)
if(NOT VORNIC_SANITIZE)
    target_link_options(vornic-program-settings INTERFACE
        -static-libstdc++ -static-libgcc -Wl,--gc-sections)
    find_library(VORNIC_PUGIXML_ARCHIVE libpugixml.a)
    if(VORNIC_PUGIXML_ARCHIVE)
        set(VORNIC_PUGIXML "${VORNIC_PUGIXML_ARCHIVE}")
    endif()
endif()

find_program(VORNIC_CCACHE ccache)
if(VORNIC_CCACHE)
    # ccache takes what is compiled with precompiled headers only with these.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        "${VORNIC_CCACHE}")
endif()

# vornic_library(NAME SOURCES file... [LINKS library...] [PRIVATE_LINKS library...])
# One folder's library. LINKS are the libraries below whose headers its own headers include.
function(vornic_library name)
    cmake_parse_arguments(PARSE_ARGV 1 folder "" "" "SOURCES;LINKS;PRIVATE_LINKS")
    add_library(${name} STATIC ${folder_SOURCES})
    target_link_libraries(${name} PUBLIC vornic-settings ${folder_LINKS} PRIVATE ${folder_PRIVATE_LINKS})
endfunction()
