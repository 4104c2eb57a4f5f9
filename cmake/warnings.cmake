# Warnings as errors for our own code; generated code (moc, uic) is compiled with them too.
add_library(panel_warnings INTERFACE)
target_compile_options(panel_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2
    -Wcast-align -Werror)
