# What `cmake --install` lays down: include/quillon/{engine,vq}, the two libraries, the converters, the tool, the CMake
# package (Quillon::Quillon, and Quillon::Engine for what is written on the engine boundary alone) and quillon.pc.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(QUILLON_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/quillon)
foreach(library qcore quillon)
  target_compile_features(${library} INTERFACE cxx_std_20)
  target_include_directories(${library} INTERFACE $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>
                                                  $<INSTALL_INTERFACE:${QUILLON_INCLUDEDIR}>)
endforeach()
set_target_properties(quillon PROPERTIES EXPORT_NAME Quillon)
set_target_properties(qcore PROPERTIES EXPORT_NAME Engine)
set_target_properties(qcore quillon PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS qcore quillon EXPORT QuillonTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS ${QUILLON_CONVERTERS} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/quillon)
if(TARGET quillon_tool)
  file(RELATIVE_PATH QUILLON_BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(quillon_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${QUILLON_BIN_TO_LIB}")
  install(TARGETS quillon_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(DIRECTORY engine DESTINATION ${QUILLON_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(CODE "set(SOURCE_DIR \"${CMAKE_SOURCE_DIR}\")\nset(INCLUDE_DIR \"${QUILLON_INCLUDEDIR}\")")
install(SCRIPT cmake/install_headers.cmake)

set(QUILLON_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quillon)
install(EXPORT QuillonTargets NAMESPACE Quillon:: DESTINATION ${QUILLON_CMAKEDIR})
configure_package_config_file(cmake/QuillonConfig.cmake.in ${CMAKE_BINARY_DIR}/QuillonConfig.cmake
                              INSTALL_DESTINATION ${QUILLON_CMAKEDIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/QuillonConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/QuillonConfig.cmake ${CMAKE_BINARY_DIR}/QuillonConfigVersion.cmake
        DESTINATION ${QUILLON_CMAKEDIR})

# The prefix is worked out from where quillon.pc lies, so that an installed tree can be moved.
file(RELATIVE_PATH QUILLON_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/quillon.pc.in ${CMAKE_BINARY_DIR}/quillon.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/quillon.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
