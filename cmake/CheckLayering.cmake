# Reads every #include in src/ and tools/ and fails when one points where it may not.
#
#   cmake [-D ROOT=<project folder>] -P cmake/CheckLayering.cmake
#
# The compiler cannot see this: all folders of src/ share one include path, and a header alone
# needs no library to link with.

cmake_minimum_required(VERSION 3.25)

if(NOT DEFINED ROOT)
    cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH ROOT)
endif()

# What each folder may include besides its own headers. A folder that is not named here may
# include nothing, so that a new one has to be given its place first.
set(may_include_platform "")
set(may_include_core platform)
set(may_include_protocol core platform)
set(may_include_pairing protocol core platform)
set(may_include_transferlog core platform)
set(may_include_discovery protocol pairing core platform)
set(may_include_receiver protocol pairing core platform)
set(may_include_sender protocol core platform)
set(may_include_service receiver discovery sender transferlog protocol pairing core platform)
set(may_include_camera protocol core platform)
set(may_include_app camera service sender receiver discovery transferlog protocol pairing core platform)
set(may_include_main.cpp app ${may_include_app})
set(may_include_phone service sender receiver discovery transferlog protocol pairing core platform)

# Windows belong to app; main.cpp makes the QApplication.
set(folders_with_widgets app main.cpp)
string(JOIN "|" widget_headers
    "QtWidgets(/.*)?"
    "Q(Application|Completer|DataWidgetMapper|Frame|Label|MainWindow|Menu|MenuBar|ProgressBar)"
    "Q(RubberBand|ScrollArea|ScrollBar|Scroller|Slider|Dial|SplashScreen|Splitter|StatusBar)"
    "Q(Style|StyleFactory|StyleOption|StylePainter|StyledItemDelegate|ItemDelegate)"
    "Q(SystemTrayIcon|TabBar|TextBrowser|ToolBar|ToolTip|WhatsThis|Wizard|WizardPage)"
    "Q[A-Za-z]*(Widget|Dialog|Layout|Button|Box|Edit)"
    "Q(AbstractItem|Column|Graphics|Header|List|Table|Tree|Undo)View"
    "Q(Graphics|Mdi).*")

# The operating system and the libraries that stand in for it, behind platform's own headers.
set(folder_of_system_headers platform/linux)
string(JOIN "|" system_headers
    "asio(\\.hpp|/.*)" "openssl/.*" "qrencode\\.h" "QtDBus(/.*)?" "QDBus.*"
    "sys/(socket|un|ioctl|epoll|eventfd)\\.h" "net/.*" "netinet/.*" "arpa/.*" "netdb\\.h"
    "ifaddrs\\.h" "linux/.*")

# The camera and the finding of codes in pictures.
set(camera_headers "ZXing/.*|QtMultimedia(/.*)?|QCamera.*|QMedia.*|QVideo.*|QImageCapture")

set(violations "")

function(report file include why)
    list(APPEND violations "${file} includes ${include}: ${why}")
    set(violations "${violations}" PARENT_SCOPE)
endfunction()

# One of our own headers, "folder/Name.h", included by `file` in `folder`.
function(check_own_header file folder include)
    if(include MATCHES "\\.moc$")
        return()
    endif()
    if(NOT include MATCHES "/")
        report(${file} ${include} "name the folder, too")
    elseif(include MATCHES "^platform/linux/" AND NOT file MATCHES "^src/platform/linux/")
        report(${file} ${include} "this header is private to platform/linux")
    else()
        string(REGEX REPLACE "/.*$" "" owner "${include}")
        set(allowed ${folder} ${may_include_${folder}})
        if(NOT owner IN_LIST allowed)
            report(${file} ${include} "${folder} may not use that")
        endif()
    endif()
    set(violations "${violations}" PARENT_SCOPE)
endfunction()

# A header of somebody else, <name>.
function(check_foreign_header file folder include)
    if(include MATCHES "^(${widget_headers})$" AND NOT folder IN_LIST folders_with_widgets)
        report(${file} ${include} "widgets belong to app")
    endif()
    if(include MATCHES "^(${system_headers})$"
            AND NOT file MATCHES "^src/${folder_of_system_headers}/")
        report(${file} ${include} "this belongs to ${folder_of_system_headers}")
    endif()
    if(include MATCHES "^(${camera_headers})$" AND NOT folder STREQUAL "camera")
        report(${file} ${include} "this belongs to camera")
    endif()
    set(violations "${violations}" PARENT_SCOPE)
endfunction()

file(GLOB_RECURSE files RELATIVE "${ROOT}"
    "${ROOT}/src/*.h" "${ROOT}/src/*.cpp" "${ROOT}/tools/*.h" "${ROOT}/tools/*.cpp")
if(NOT files)
    message(FATAL_ERROR "No sources under ${ROOT}.")
endif()

foreach(file IN LISTS files)
    string(REGEX REPLACE "^(src|tools)/([^/]+).*$" "\\2" folder "${file}")
    file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
    foreach(line IN LISTS lines)
        if(line MATCHES "include[ \t]*\"([^\"]+)\"")
            check_own_header(${file} ${folder} ${CMAKE_MATCH_1})
        elseif(line MATCHES "include[ \t]*<([^>]+)>")
            check_foreign_header(${file} ${folder} ${CMAKE_MATCH_1})
        endif()
    endforeach()
endforeach()

if(violations)
    list(JOIN violations "\n" text)
    message("${text}")
    list(LENGTH violations count)
    message(FATAL_ERROR "Forbidden includes: ${count}")
endif()
list(LENGTH files count)
message(STATUS "Includes of ${count} files are as they may be")
