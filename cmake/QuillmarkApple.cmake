# The build for the host's own platform: the bundle links the system frameworks and the
# host's C SDK instead of our stand-ins, and leaves the interpreter's symbols to the host
# that loads it. Defines Quillmark::HostPlatform (the frameworks) and Quillmark::HostSDK.
enable_language(OBJC)
set(CMAKE_OBJC_VISIBILITY_PRESET hidden)

set(QUILLMARK_HOST_SDK_DIR "" CACHE PATH
    "Folder holding the host's SketchUpAPI.framework (the SDK the bundle links)")
if(QUILLMARK_HOST_SDK_DIR STREQUAL "")
  message(FATAL_ERROR "Name the folder of the host's SketchUpAPI.framework: -DQUILLMARK_HOST_SDK_DIR=...")
endif()
if(NOT EXISTS "${QUILLMARK_HOST_SDK_DIR}/SketchUpAPI.framework")
  message(WARNING "No SketchUpAPI.framework in ${QUILLMARK_HOST_SDK_DIR}: the bundle will not link")
endif()

add_library(quillmark_host_platform INTERFACE)
add_library(Quillmark::HostPlatform ALIAS quillmark_host_platform)
target_link_libraries(quillmark_host_platform INTERFACE
  "-framework AppKit" "-framework CoreGraphics" "-framework Carbon" "-framework Foundation")

add_library(quillmark_host_sdk INTERFACE)
add_library(Quillmark::HostSDK ALIAS quillmark_host_sdk)
target_compile_options(quillmark_host_sdk INTERFACE "-F${QUILLMARK_HOST_SDK_DIR}")
target_link_options(quillmark_host_sdk INTERFACE "-F${QUILLMARK_HOST_SDK_DIR}")
target_link_libraries(quillmark_host_sdk INTERFACE "-framework SketchUpAPI")

# The seam's declarations without the stand-in's platform headers beside them, which would
# hide the real frameworks' headers.
set(QUILLMARK_SEAM_INCLUDE_DIR "${PROJECT_BINARY_DIR}/host_seam")
foreach(header objc_seam.h desktop_api.h)
  configure_file("${PROJECT_SOURCE_DIR}/ext-cpp/platform/desktop/include/${header}"
                 "${QUILLMARK_SEAM_INCLUDE_DIR}/${header}" COPYONLY)
endforeach()
