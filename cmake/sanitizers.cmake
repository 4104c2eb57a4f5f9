# PANEL_SANITIZE is a list for -fsanitize=, set by the presets asan and tsan.
set(PANEL_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=")
if(PANEL_SANITIZE)
    add_compile_options(-fsanitize=${PANEL_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${PANEL_SANITIZE})
    # Lines are all that a report names; more makes the builds a tenth slower.
    string(REPLACE "-g" "-g1" CMAKE_CXX_FLAGS_DEBUG "${CMAKE_CXX_FLAGS_DEBUG}")
    if(PANEL_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
endif()
