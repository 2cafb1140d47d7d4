# Gives the layering check a tree with all of these #includes and compares what it reports.
# Needs CHECK, the script, and SCRATCH, a folder to write to.

cmake_minimum_required(VERSION 3.25)

set(allowed
    "src/platform/Tcp.h          |\"platform/Bytes.h\""
    "src/platform/linux/Tcp.cpp  |\"platform/linux/Tcp.h\""
    "src/platform/linux/Tcp.cpp  |<asio/ip/tcp.hpp>"
    "src/core/Log.cpp            |\"platform/Files.h\""
    "src/core/Log.cpp            |\"Log.moc\""
    "src/core/Log.cpp            |<QGuiApplication>"
    "src/receiver/Server.cpp     |\"pairing/KeyStore.h\""
    "src/discovery/Scanner.cpp   |\"pairing/Target.h\""
    "src/sender/Sender.cpp       |\"protocol/V4Stream.h\""
    "src/app/Window.cpp          |\"sender/Sender.h\""
    "src/app/Window.cpp          |<QMainWindow>"
    "src/main.cpp                |\"app/AppDelegate.h\""
    "src/main.cpp                |<QApplication>"
    "tools/phone/main.cpp        |\"receiver/Server.h\"")

set(forbidden
    "src/platform/Tcp.h          |\"core/Log.h\""
    "src/platform/Tcp.h          |<asio.hpp>"
    "src/platform/Tcp.h          |<sys/socket.h>"
    "src/platform/Crypto.cpp     |<openssl/evp.h>"
    "src/core/Log.cpp            |\"receiver/Server.h\""
    "src/core/Log.cpp            |\"platform/linux/Tcp.h\""
    "src/core/Log.cpp            |\"Text.h\""
    "src/core/Log.cpp            |<QtWidgets/QWidget>"
    "src/core/Log.cpp            |<QMessageBox>"
    "src/pairing/KeyStore.cpp    |\"receiver/Server.h\""
    "src/discovery/Scanner.cpp   |\"receiver/Server.h\""
    "src/discovery/Browser.cpp   |<QDBusConnection>"
    "src/receiver/Server.cpp     |\"transferlog/TransferLog.h\""
    "src/receiver/Server.cpp     |\"app/Window.h\""
    "src/sender/Sender.cpp       |\"receiver/Server.h\""
    "src/sender/Sender.cpp       |\"discovery/Scanner.h\""
    "src/app/Window.cpp          |<netinet/in.h>"
    "src/newcomer/Thing.cpp      |\"core/Log.h\""
    "tools/phone/main.cpp        |\"app/Window.h\""
    "tools/phone/main.cpp        |<asio.hpp>")

# Sets `file` and `header` from a row "file |include", the header without its quotes.
macro(read_row row)
    string(REGEX MATCH "^([^ ]+) *\\|[<\"](.+)[>\"]$" matched "${row}")
    set(file ${CMAKE_MATCH_1})
    set(header ${CMAKE_MATCH_2})
endmacro()

file(REMOVE_RECURSE "${SCRATCH}")
foreach(row IN LISTS allowed forbidden)
    read_row("${row}")
    string(REGEX REPLACE "^[^|]*\\|" "" include "${row}")
    file(APPEND "${SCRATCH}/${file}" "  #  include ${include} // why\n")
endforeach()

execute_process(COMMAND "${CMAKE_COMMAND}" -D "ROOT=${SCRATCH}" -P "${CHECK}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)

list(LENGTH forbidden count)
if(result EQUAL 0 OR NOT output MATCHES "Forbidden includes: ${count}\n")
    message(SEND_ERROR "The check should have found ${count}: ${output}")
endif()
foreach(row IN LISTS allowed)
    read_row("${row}")
    if(output MATCHES "${file} includes ${header}:")
        message(SEND_ERROR "Refused, though it is allowed: ${row}")
    endif()
endforeach()
foreach(row IN LISTS forbidden)
    read_row("${row}")
    if(NOT output MATCHES "${file} includes ${header}:")
        message(SEND_ERROR "Accepted, though it is forbidden: ${row}")
    endif()
endforeach()

# A tree without a fault passes.
file(REMOVE_RECURSE "${SCRATCH}")
file(WRITE "${SCRATCH}/src/main.cpp" "#include \"core/Log.h\"\n")
execute_process(COMMAND "${CMAKE_COMMAND}" -D "ROOT=${SCRATCH}" -P "${CHECK}"
    RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    message(SEND_ERROR "A tree without a fault was refused: ${output}")
endif()
file(REMOVE_RECURSE "${SCRATCH}")
