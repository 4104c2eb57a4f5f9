# What the lean Qt is made with: the first content of its CMake cache (cmake -C). Everything that is
# not named here stays as Qt has it. A feature that the program needs and that is missing shows at the
# latest in the checks on the emulated device with the lean package (emulator/test.sh --lean).

# without(REASON FEATURE...): these are left out.
function(without reason)
    foreach(feature IN LISTS ARGN)
        set(FEATURE_${feature} OFF CACHE BOOL "${reason}")
    endforeach()
endfunction()

# with(REASON FEATURE...): these must be there; configuring fails where one cannot be had.
function(with reason)
    foreach(feature IN LISTS ARGN)
        set(FEATURE_${feature} ON CACHE BOOL "${reason}")
    endforeach()
endfunction()

with("the screen, the keyboard and the multi-touch screen of a panel"
    linuxfb evdev)
with("what the program draws with, and what the system need not have a library for"
    freetype harfbuzz png)
with("ini files, the commands that the panel runs, links to devices that come and go, languages"
    settings process filesystemwatcher inotify translation temporaryfile)
with("the comparison of its pictures with the ordinary program's; no part of the program itself"
    testlib)

without("modules of which the program uses nothing"
    network sql dbus xml printsupport concurrent)
without("a panel has a framebuffer, no graphics processor and no other window system"
    opengl opengles2 opengles3 egl eglfs gbm kms vulkan openvg directfb
    xcb xlib xkbcommon xkbcommon_x11 vnc gtk3 sessionmanager systemtrayicon)
without("the program opens its touchscreen itself, and Qt's own evdev reader the others by name"
    libudev libinput mtdev tslib tuiotouch integrityhid)
without("libraries of the system: the bundled ones hold only what Qt calls, and nothing is loaded"
    system_freetype system_harfbuzz system_png system_zlib system_pcre2 system_doubleconversion
    system_libb2 system_jpeg system_textmarkdownreader zstd)
without("the event loop needs no glib; the fonts are the panel's own two files, not fontconfig's"
    glib fontconfig)
without("texts are compared by the program's own rules, dates are printed in one form"
    icu timezone jalalicalendar hijricalendar islamiccivilcalendar)
without("nobody reads the screen aloud on a panel"
    accessibility accessibility_atspi_bridge)
without("logs go to the standard streams"
    journald syslog slog2 lttng backtrace)
without("parsers and writers of formats that no part of the program reads"
    mimetype xmlstream xmlstreamreader xmlstreamwriter commandlineparser
    textmarkdownreader textmarkdownwriter textodfwriter pdf picture)
without("pictures are PNG; XPM is what Qt's own small icons are in"
    jpeg gif ico movie imageformat_bmp imageformat_ppm imageformat_xbm)
without("screens of a panel have at most 8 bits for each colour"
    raster_64bit raster_fp)
without("a panel's program shares its memory with nobody"
    sharedmemory systemsemaphore)
without("dialogs, which the panel has of its own"
    colordialog filedialog fontdialog inputdialog progressdialog errormessage filesystemmodel
    desktopservices)
without("widgets and views that are on no page; styles name them and would pull them in"
    mainwindow dockwidget mdiarea toolbar toolbox menubar statusbar splashscreen splitter
    calendarwidget datetimeedit keysequenceedit commandlinkbutton fontcombobox dial scroller
    treeview treewidget tableview tablewidget columnview datawidgetmapper completer fscompleter
    graphicsview graphicseffect effects syntaxhighlighter textbrowser
    undocommand undostack undogroup undoview)

set(BUILD_SHARED_LIBS OFF CACHE BOOL "one file, without what no code refers to")
set(INPUT_opengl no CACHE STRING "or Qt asks for a library of it all the same")
set(FEATURE_gc_binaries ON CACHE BOOL "each function and table can be dropped by itself")
set(FEATURE_precompile_header ON CACHE BOOL "half the time")
set(QT_BUILD_EXAMPLES OFF CACHE BOOL "")
set(QT_BUILD_TESTS OFF CACHE BOOL "")
set(QT_BUILD_TOOLS_BY_DEFAULT OFF CACHE BOOL "")
set(QT_FORCE_FIND_TOOLS ON CACHE BOOL "moc, rcc and uic are this machine's own, of the same version")
