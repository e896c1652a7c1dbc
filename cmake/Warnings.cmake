# One warnings target, linked into the product and the tests alike.
add_library(tidewell_warnings INTERFACE)
target_compile_options(tidewell_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Wold-style-cast -Wcast-align -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough
    -Wformat=2)
if(TIDEWELL_WERROR)
    target_compile_options(tidewell_warnings INTERFACE -Werror)
endif()
