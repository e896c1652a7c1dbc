# One warnings target, linked into the product and the tests alike.
add_library(tidewell_warnings INTERFACE)
target_compile_options(tidewell_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Wold-style-cast -Wcast-align -Woverloaded-virtual -Wimplicit-fallthrough
    -Wformat=2)
# GCC 12's optimiser reports overlapping copies inside std::string's own concatenation (a known false alarm of
# -Wrestrict at -O2 and above); the debug builds keep the warning. -Wnull-dereference is left out for the same
# reason: it acts only in optimised builds, and there it flagged pointers the code had just checked (through
# Qt's guarded pointers once inlined).
target_compile_options(tidewell_warnings INTERFACE $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Debug>>>:-Wno-restrict>)
if(TIDEWELL_WERROR)
    target_compile_options(tidewell_warnings INTERFACE -Werror)
endif()
