# What every target of the project has in common: warnings, sanitizers, Qt's stricter API.

add_library(tamrik_flags INTERFACE)
target_compile_options(tamrik_flags INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wconversion -Wshadow -Wold-style-cast -Wcast-qual -Wformat=2
    -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi -Wimplicit-fallthrough
    $<$<CXX_COMPILER_ID:GNU>:-Wuseless-cast -Wduplicated-cond -Wlogical-op>)
target_compile_definitions(tamrik_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(TAMRIK_SANITIZE STREQUAL "address")
    set(tamrik_sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all)
elseif(TAMRIK_SANITIZE STREQUAL "thread")
    set(tamrik_sanitizers -fsanitize=thread)
elseif(TAMRIK_SANITIZE STREQUAL "fuzzer")
    set(tamrik_sanitizers -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
elseif(TAMRIK_SANITIZE)
    message(FATAL_ERROR
        "TAMRIK_SANITIZE is '${TAMRIK_SANITIZE}'; it may be empty, address, thread or fuzzer")
endif()
if(TAMRIK_SANITIZE)
    target_compile_options(tamrik_flags INTERFACE ${tamrik_sanitizers} -fno-omit-frame-pointer)
    target_compile_definitions(tamrik_flags INTERFACE _GLIBCXX_ASSERTIONS)
    target_link_options(tamrik_flags INTERFACE ${tamrik_sanitizers})
endif()

# tamrik_precompiled(NAME HEADERS <header>... LINK lib...)
#
# Headers that are costly to read, precompiled once for all targets that reuse them. Nothing may
# depend on that: the presets core-only and clang go without.
function(tamrik_precompiled name)
    cmake_parse_arguments(ARG "" "" "HEADERS;LINK" ${ARGN})
    add_library(${name} OBJECT ${PROJECT_SOURCE_DIR}/cmake/Precompiled.cpp)
    target_link_libraries(${name} PRIVATE tamrik_flags ${ARG_LINK})
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# tamrik_use_precompiled(TARGET core|gui|widgets), or one of these with _test, or base_test
function(tamrik_use_precompiled target kind)
    if(TAMRIK_PCH)
        target_precompile_headers(${target} REUSE_FROM tamrik_precompiled_${kind})
    endif()
endfunction()

# tamrik_library(NAME [MOC] [OBJECT] HEADERS h... SOURCES c... [LINK lib...] [PRIVATE_LINK lib...]
#                [PCH core|gui|widgets])
#
# One layer of the program: a static library whose headers are found from src/ and must each
# compile on their own (target all_verify_interface_header_sets). OBJECT makes it a set of object
# files instead: for an implementation of the seam, which every layer above may call without naming it.
function(tamrik_library name)
    cmake_parse_arguments(ARG "MOC;OBJECT" "PCH" "HEADERS;SOURCES;LINK;PRIVATE_LINK" ${ARGN})
    if(ARG_SOURCES)
        if(ARG_OBJECT)
            add_library(${name} OBJECT ${ARG_SOURCES})
        else()
            add_library(${name} STATIC ${ARG_SOURCES})
        endif()
        set(scope PUBLIC)
        target_link_libraries(${name} PRIVATE tamrik_flags)
    else()
        add_library(${name} INTERFACE)
        set(scope INTERFACE)
    endif()
    target_sources(${name} ${scope}
        FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${ARG_HEADERS})
    target_link_libraries(${name} ${scope} ${ARG_LINK})
    if(ARG_PRIVATE_LINK)
        target_link_libraries(${name} PRIVATE ${ARG_PRIVATE_LINK})
    endif()
    if(ARG_MOC)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
    endif()
    if(ARG_PCH)
        tamrik_use_precompiled(${name} ${ARG_PCH})
    endif()
    set_target_properties(${name} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
endfunction()
