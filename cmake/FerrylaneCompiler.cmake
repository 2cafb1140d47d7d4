# Language level, compiler launcher, warnings and sanitizers: what holds for every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

# With base_dir and without hash_dir a fresh clone in another folder finds what this one compiled.
find_program(FERRYLANE_CCACHE ccache)
if(FERRYLANE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env
        "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" CCACHE_NOHASHDIR=1
        "${FERRYLANE_CCACHE}")
endif()

# Warnings: one list, so that no target is stricter or laxer than another.
add_library(ferrylane_warnings INTERFACE)
target_compile_options(ferrylane_warnings INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wconversion
    -Wsign-conversion
    -Wold-style-cast
    -Wnon-virtual-dtor
    -Woverloaded-virtual
    -Wcast-align
    -Wcast-qual
    -Wdouble-promotion
    -Wextra-semi
    -Wformat=2
    -Wimplicit-fallthrough
    -Wmissing-declarations
    -Wredundant-decls
    -Wswitch-enum
    -Wundef
    -Wunused
    -Wvla
    $<$<BOOL:${FERRYLANE_WERROR}>:-Werror>)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(ferrylane_warnings INTERFACE
        -Wduplicated-branches
        -Wduplicated-cond
        -Wlogical-op
        -Wsuggest-override
        # Asio's fences are no fault of ours and only GCC's thread sanitizer speaks of them.
        -Wno-tsan)
else()
    target_compile_options(ferrylane_warnings INTERFACE
        -Wcomma
        -Winconsistent-missing-destructor-override
        -Wloop-analysis
        -Wmissing-prototypes
        -Wshadow-all
        -Wsuggest-override
        -Wthread-safety
        -Wunreachable-code)
endif()

# A wrong index into a span, string or vector ends the program instead of reading past its end.
add_compile_definitions(_GLIBCXX_ASSERTIONS)

# Cheap hardening for what people run: it reads bytes from strangers. (Sanitizers bring their own.)
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT FERRYLANE_SANITIZE)
    add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    add_link_options(-Wl,-z,relro -Wl,-z,now)
endif()

if(FERRYLANE_SANITIZE)
    add_compile_options(
        "-fsanitize=${FERRYLANE_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options("-fsanitize=${FERRYLANE_SANITIZE}")
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC's flow analysis is misled by its own instrumentation.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
endif()

if(FERRYLANE_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "FERRYLANE_FUZZ needs Clang: libFuzzer is part of it.")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# What the tests need in their environment, for the property ENVIRONMENT_MODIFICATION.
set(FERRYLANE_TEST_ENVIRONMENT QT_QPA_PLATFORM=set:offscreen)
if(FERRYLANE_SANITIZE)
    # Debian's name of the symbolizer has a version in it, so that the runtimes do not find it.
    # Without names the suppressions cannot match.
    find_program(FERRYLANE_SYMBOLIZER NAMES llvm-symbolizer-14 llvm-symbolizer)
    set(symbolizer "")
    if(FERRYLANE_SYMBOLIZER)
        set(symbolizer ":external_symbolizer_path=${FERRYLANE_SYMBOLIZER}")
    endif()
    list(APPEND FERRYLANE_TEST_ENVIRONMENT
        "ASAN_OPTIONS=set:strict_string_checks=1:detect_stack_use_after_return=1${symbolizer}"
        "UBSAN_OPTIONS=set:print_stacktrace=1${symbolizer}"
        "TSAN_OPTIONS=set:suppressions=${CMAKE_SOURCE_DIR}/cmake/tsan.supp:second_deadlock_stack=1:halt_on_error=1${symbolizer}")
endif()
