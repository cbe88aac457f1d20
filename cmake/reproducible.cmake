# The same source gives the same programs in whichever folders it lies and is built. Only where no one
# debugs or counts coverage, which need the true paths. The folder of the build may lie in that of the
# source, and then stands behind it: the last one that fits counts.
foreach(folder "${PROJECT_SOURCE_DIR}=." "${PROJECT_BINARY_DIR}=./build")
  target_compile_options(zandor_options INTERFACE
    "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-ffile-prefix-map=${folder}>")
endforeach()
