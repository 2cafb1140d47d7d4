# Everything that comes from outside, found once. Imported targets are SYSTEM for their users.
# A new dependency also goes into packaging/debian-packages.txt.

find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui)
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# Standalone Asio is headers only and has no package file for CMake.
find_path(FERRYLANE_ASIO_INCLUDE asio.hpp REQUIRED)
add_library(ferrylane_asio INTERFACE IMPORTED)
target_include_directories(ferrylane_asio SYSTEM INTERFACE "${FERRYLANE_ASIO_INCLUDE}")
target_compile_definitions(ferrylane_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(ferrylane_asio INTERFACE Threads::Threads)

if(FERRYLANE_TESTS)
    find_package(GTest REQUIRED)
endif()
