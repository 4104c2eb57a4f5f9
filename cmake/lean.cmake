# With PANEL_LEAN: one program of Qt and all, made of the static Qt of packaging/lean-qt.sh, which lies
# in build/lean-qt, or where the environment's PANEL_LEAN_QT says. Before Qt is looked for.
if(DEFINED ENV{PANEL_LEAN_QT})
    set(leanQt "$ENV{PANEL_LEAN_QT}")
else()
    set(architecture armhf)
    if(NOT CMAKE_CROSSCOMPILING)
        execute_process(COMMAND dpkg --print-architecture OUTPUT_VARIABLE architecture
            OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    endif()
    set(leanQt "${PROJECT_SOURCE_DIR}/build/lean-qt/${architecture}")
endif()
if(NOT EXISTS "${leanQt}/lib/cmake/Qt6/Qt6Config.cmake")
    message(FATAL_ERROR "There is no lean Qt in ${leanQt}; packaging/lean-qt.sh makes it")
endif()
set(Qt6_DIR "${leanQt}/lib/cmake/Qt6" CACHE PATH "" FORCE)
list(PREPEND CMAKE_PREFIX_PATH "${leanQt}")
if(CMAKE_CROSSCOMPILING)
    list(PREPEND CMAKE_FIND_ROOT_PATH "${leanQt}") # before the sysroot, which has a Qt, too
endif()
set(QT_HOST_PATH /usr) # moc, uic and rcc

# Each function and table by itself, and none that nothing refers to. Not optimised as one program when
# it is linked: 6 % less code runs until the first frame then, but each link takes four minutes.
add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--gc-sections -Wl,--as-needed -Wl,-O1)
# The C++ library's symbols are looked up by name, thousands of them, before main(). What is taken in
# is nobody else's: a firmware library may bring a C++ library of another version.
add_link_options(-static-libstdc++ -static-libgcc -Wl,--exclude-libs,ALL)

# panel_import_plugins(TARGET NAME...): TARGET gets these plugins of Qt, and none besides.
function(panel_import_plugins target)
    list(TRANSFORM ARGN PREPEND Qt6::)
    qt_import_plugins(${target} NO_DEFAULT INCLUDE ${ARGN})
endfunction()

# The code of the first frame before all other code, in the order in which it runs: a cold start reads
# that one megabyte of the program's code, not all of it page by page (platform/programahead.cpp).
# The list is ARM's. A name that is none (any more) does no harm; one that is missing makes a start a
# little slower.
set(firstFrame "${PROJECT_SOURCE_DIR}/packaging/lean/firstframe.txt")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${firstFrame}")
file(STRINGS "${firstFrame}" functions REGEX "^[^#]")
list(TRANSFORM functions REPLACE "^.+$" "*(.text.\\0 .text.unlikely.\\0 .text.startup.\\0)")
list(JOIN functions "\n" functions)
set(linkOrder "${PROJECT_BINARY_DIR}/firstframe.ld")
file(CONFIGURE OUTPUT "${linkOrder}" @ONLY CONTENT [[
SECTIONS
{
.text.first_frame :
{
@functions@
panel_first_frame_end = .;
}
}
INSERT BEFORE .text;
]])

# panel_order_code(TARGET): the program TARGET is linked so. The map says where everything has gone.
function(panel_order_code target)
    target_link_options(${target} PRIVATE
        "-Wl,-T,${linkOrder}" "-Wl,-Map,$<TARGET_FILE:${target}>.map")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${linkOrder}")
endfunction()
