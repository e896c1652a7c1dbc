# Each folder of src/ is one static library, tidewell_<folder>, which links the layers src/layers.txt allows it.
# A library's headers are reachable as "<folder>/..." only through an include folder of its own, which it passes
# on to what links it: an include of a layer the library may not use names no file, and the build fails.

file(STRINGS ${PROJECT_SOURCE_DIR}/src/layers.txt tidewellLayerLines REGEX "^[a-z]+:")
foreach(line IN LISTS tidewellLayerLines)
    string(REGEX MATCH "^([a-z]+):(.*)$" matched "${line}")
    separate_arguments(uses UNIX_COMMAND "${CMAKE_MATCH_2}")
    list(APPEND tidewellLayers ${CMAKE_MATCH_1})
    set(TIDEWELL_LAYER_USES_${CMAKE_MATCH_1} ${uses})
endforeach()

# tidewell_layer(<folder>): the library of src/<folder>, linked to the layers it may use. Its sources are added by
# the folder's own CMakeLists.txt.
function(tidewell_layer layer)
    if(NOT layer IN_LIST tidewellLayers)
        message(FATAL_ERROR "src/layers.txt has no line for the layer '${layer}'")
    endif()
    add_library(tidewell_${layer} STATIC)
    set(includeFolder ${CMAKE_BINARY_DIR}/layers/${layer})
    file(MAKE_DIRECTORY ${includeFolder})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${layer} ${includeFolder}/${layer} SYMBOLIC)
    target_include_directories(tidewell_${layer} PUBLIC ${includeFolder})
    foreach(used IN LISTS TIDEWELL_LAYER_USES_${layer})
        target_link_libraries(tidewell_${layer} PUBLIC tidewell_${used})
    endforeach()
    target_link_libraries(tidewell_${layer} PRIVATE tidewell_warnings)
endfunction()
