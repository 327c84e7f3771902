# What differs for Windows: the system's headers, the linking of its modules, their version resource.
enable_language(RC)

# Headers of the same names as those of platform/, which forward to the system's. They come first.
include_directories(${PROJECT_SOURCE_DIR}/platform/windows)
include_directories(SYSTEM ${PROJECT_SOURCE_DIR}/platform/windows/ddk)

# GdiplusBase allocates with a function that can return null; PFN stands for functions of any type.
add_compile_options(-fcheck-new -Wno-cast-function-type)
# A driver brings no libraries of its compiler with it.
add_link_options(-static -fstack-protector-strong -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va)
# A module has the same name for a driver package and for the loader: no "lib" in front.
set(CMAKE_SHARED_LIBRARY_PREFIX "")

# Gives a module its version resource, compiled apart: the resource compiler stumbles over the module's
# own definitions.
function(vlx_version_resource target description)
  set(VLX_FILE ${target})
  set(VLX_DESCRIPTION ${description})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc
                 @ONLY)
  add_library(${target}_version OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_version>)
endfunction()
