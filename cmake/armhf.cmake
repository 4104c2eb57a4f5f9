# Toolchain file: compiles for ARM (Debian's armhf) against the sysroot that packaging/sysroot.sh
# makes. moc, uic and rcc come from this machine's own Qt, which must be of the sysroot's version.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# binutils of this machine's own architecture do not know the other.
set(CMAKE_READELF arm-linux-gnueabihf-readelf CACHE FILEPATH "")

# Known here alone: the tries of the compiler read this file without the cache.
get_filename_component(PANEL_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot/armhf" ABSOLUTE)
if(DEFINED ENV{PANEL_SYSROOT})
    set(PANEL_SYSROOT "$ENV{PANEL_SYSROOT}")
endif()
set(CMAKE_SYSROOT "${PANEL_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH "${PANEL_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(hostCompiler NAMES cc gcc REQUIRED)
execute_process(COMMAND "${hostCompiler}" -print-multiarch OUTPUT_VARIABLE hostArchitecture
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR "/usr/lib/${hostArchitecture}/cmake")

set(ENV{PKG_CONFIG_SYSROOT_DIR} "${PANEL_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${PANEL_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${PANEL_SYSROOT}/usr/share/pkgconfig")
