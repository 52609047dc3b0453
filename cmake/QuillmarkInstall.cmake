# `cmake --install` for extension authors: the headers, the static parts, the SDK stand-in
# they link, and a package config so that find_package(Quillmark CONFIG) answers the same
# Quillmark::geom, Quillmark::utils and Quillmark::ruby targets the build defines as aliases.
#
# Headers keep the source tree's shape under include/quillmark/ (geom/, utils/, ruby/, and
# detail/ for what the public headers need but users do not call), so a consumer spells
# every include <quillmark/...> as the library's own code does. Nothing of ours sits at a
# bare name. The SDK stand-in's headers go to include/quillmark/host_sdk/, which its target
# puts on the include path: they keep the SDK's own spelling, <SketchUpAPI/...>, as the
# host's SDK would provide them.
# The interpreter is not exported with the targets: its paths belong to the machine that
# built the package, so the config asks the consumer's Ruby again (QuillmarkRuby.cmake).
# What is recorded is the Ruby ABI the static libraries were compiled for: they inline the
# interpreter's object layouts and special constants, which differ between minor versions
# (Qnil is 8 up to 3.1 and 4 from 3.2), so the config refuses a consumer built for another.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(QUILLMARK_INSTALL_SDK_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/quillmark/host_sdk")
set(QUILLMARK_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/Quillmark")

set_target_properties(quillmark_geom PROPERTIES EXPORT_NAME geom)
set_target_properties(quillmark_utils PROPERTIES EXPORT_NAME utils)
set_target_properties(quillmark_ruby PROPERTIES EXPORT_NAME ruby)
set_target_properties(quillmark_sketchup_api PROPERTIES EXPORT_NAME sketchup_api)

install(TARGETS quillmark_geom quillmark_utils quillmark_ruby quillmark_sketchup_api
  EXPORT QuillmarkTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(DIRECTORY "${QUILLMARK_INCLUDE_ROOT}/quillmark"
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
# The stand-in's own control header (building models for tests) is not part of the SDK.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/ext-cpp/platform/sketchup_api/include/SketchUpAPI"
  DESTINATION ${QUILLMARK_INSTALL_SDK_INCLUDEDIR})

install(EXPORT QuillmarkTargets NAMESPACE Quillmark:: DESTINATION ${QUILLMARK_INSTALL_CMAKEDIR})
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/QuillmarkConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/QuillmarkConfig.cmake"
  INSTALL_DESTINATION ${QUILLMARK_INSTALL_CMAKEDIR})
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/QuillmarkRubyABI.cmake" @ONLY CONTENT [[
# The Ruby this package was built for: a consumer must build for the same minor version and
# platform.
set(QUILLMARK_BUILT_RUBY_EXECUTABLE "@RUBY_EXECUTABLE@")
set(QUILLMARK_BUILT_RUBY_VERSION "@RUBY_VERSION@")
set(QUILLMARK_BUILT_RUBY_ABI "@RUBY_ABI@")
]])
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QuillmarkConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/QuillmarkConfig.cmake"
  "${PROJECT_BINARY_DIR}/QuillmarkConfigVersion.cmake"
  "${PROJECT_BINARY_DIR}/QuillmarkRubyABI.cmake"
  "${PROJECT_SOURCE_DIR}/cmake/QuillmarkRuby.cmake"
  DESTINATION ${QUILLMARK_INSTALL_CMAKEDIR})

# pkg-config, for builds that are not CMake (mkmf's pkg_config("quillmark") among them).
# The interpreter's flags are not in it: the consumer's own Ruby supplies them.
configure_file("${PROJECT_SOURCE_DIR}/cmake/quillmark.pc.in" "${PROJECT_BINARY_DIR}/quillmark.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/quillmark.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
