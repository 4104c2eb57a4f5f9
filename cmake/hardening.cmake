# What makes a fault of memory end the program before somebody can make use of it. For every build
# but those with sanitizers, which look for the same faults their own way.
include(CheckCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)

check_pie_supported() # at a random address, also where that is not the compiler's own choice
add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)

if(NOT PANEL_SANITIZE)
    foreach(flag -fstack-protector-strong -fstack-clash-protection)
        string(MAKE_C_IDENTIFIER "PANEL_HAS${flag}" known)
        check_compiler_flag(CXX ${flag} ${known})
        if(${known})
            add_compile_options(${flag})
        endif()
    endforeach()

    # Level 3 knows more sizes than 2, where compiler and C library have it; without optimisation
    # there is none.
    set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
    check_cxx_source_compiles("
        #include <cstdlib>
        #if __USE_FORTIFY_LEVEL < 3
        #error level 3 is not known
        #endif
        int main() { return 0; }" PANEL_HAS_FORTIFY_3)
    unset(CMAKE_REQUIRED_FLAGS)
    set(level $<IF:$<BOOL:${PANEL_HAS_FORTIFY_3}>,3,2>)
    add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;\
-D_FORTIFY_SOURCE=${level}>")
endif()
