# Everything that comes from outside, found once. Imported targets are SYSTEM for their users.
# A new dependency also goes into packaging/debian-packages.txt.

find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui Multimedia Network Widgets)
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
find_package(ZXing REQUIRED)

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# Standalone Asio is headers only and has no package file for CMake.
find_path(FERRYLANE_ASIO_INCLUDE asio.hpp REQUIRED)
add_library(ferrylane_asio INTERFACE IMPORTED)
target_include_directories(ferrylane_asio SYSTEM INTERFACE "${FERRYLANE_ASIO_INCLUDE}")
# How Asio allocates would else depend on whether a header of the standard library comes before its
# first one, and so differ from file to file: one file would free what another has allocated.
target_compile_definitions(ferrylane_asio INTERFACE
    ASIO_STANDALONE ASIO_NO_DEPRECATED ASIO_DISABLE_STD_ALIGNED_ALLOC)
target_link_libraries(ferrylane_asio INTERFACE Threads::Threads)

find_path(FERRYLANE_QRENCODE_INCLUDE qrencode.h REQUIRED)
find_library(FERRYLANE_QRENCODE qrencode REQUIRED)
add_library(ferrylane_qrencode INTERFACE IMPORTED)
target_include_directories(ferrylane_qrencode SYSTEM INTERFACE "${FERRYLANE_QRENCODE_INCLUDE}")
target_link_libraries(ferrylane_qrencode INTERFACE "${FERRYLANE_QRENCODE}")

if(FERRYLANE_TESTS)
    find_package(GTest REQUIRED)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
endif()
