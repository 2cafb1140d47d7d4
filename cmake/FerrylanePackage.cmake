# What "cmake --install" puts where, and the Debian package that "cpack" makes of it.

include(GNUInstallDirs)
set(documents ${CMAKE_INSTALL_DATADIR}/doc/ferrylane)

install(TARGETS ferrylane ferrylane-phone RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(data "${CMAKE_SOURCE_DIR}/packaging")
install(FILES "${data}/ferrylane.desktop" DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES "${data}/example.tarrowby.ferrylane.metainfo.xml"
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
foreach(size IN ITEMS 16 22 24 32 48 64 128 256)
    install(FILES "${CMAKE_SOURCE_DIR}/resources/icons/ferrylane-${size}.png"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
        RENAME ferrylane.png)
endforeach()
install(FILES "${CMAKE_SOURCE_DIR}/resources/FerrylaneLogo.svg"
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
    RENAME ferrylane.svg)
install(FILES "${data}/firewall/firewalld.xml"
    DESTINATION lib/firewalld/services
    RENAME ferrylane.xml)
install(FILES "${data}/firewall/ufw"
    DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/ufw/applications.d
    RENAME ferrylane)
install(FILES "${data}/debian/copyright" DESTINATION ${documents})

# Manual pages and the list of changes are compressed, as Debian wants them.
find_program(GZIP gzip REQUIRED)
function(install_compressed source folder name)
    set(compressed "${CMAKE_BINARY_DIR}/compressed/${name}.gz")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
    file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/compressed")
    execute_process(COMMAND "${GZIP}" -9 -n -c "${source}"
        OUTPUT_FILE "${compressed}" COMMAND_ERROR_IS_FATAL ANY)
    install(FILES "${compressed}" DESTINATION ${folder})
endfunction()
install_compressed("${data}/ferrylane.1" ${CMAKE_INSTALL_MANDIR}/man1 ferrylane.1)
install_compressed("${data}/ferrylane-phone.1" ${CMAKE_INSTALL_MANDIR}/man1 ferrylane-phone.1)
install_compressed("${data}/debian/changelog" ${documents} changelog)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ferrylane)
set(CPACK_PACKAGE_VENDOR Tarrowby)
set(CPACK_PACKAGE_CONTACT "Tarrowby <support@tarrowby.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://www.tarrowby.example/ferrylane")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "move files between an Android phone and this computer")
set(CPACK_PACKAGE_DESCRIPTION "Ferrylane receives files from paired phones and sends files to them over the
local network: encrypted, verified, and with no cloud in between.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
# The libraries by what the programs link; besides, what is loaded at run time.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "gstreamer1.0-plugins-base, gstreamer1.0-plugins-good")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "avahi-daemon, fonts-noto-color-emoji, qt6-wayland")
file(WRITE "${CMAKE_BINARY_DIR}/conffiles" "/etc/ufw/applications.d/ferrylane\n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${CMAKE_BINARY_DIR}/conffiles")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
