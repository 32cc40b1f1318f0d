# Headers, library, CMake package and pkg-config file. Everything installed may be moved as a whole.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KesraNTC)

install(TARGETS KesraNTC EXPORT KesraNTCTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(WIN32 AND TARGET kesra-demo)
  install(TARGETS kesra-demo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(EXPORT KesraNTCTargets NAMESPACE KesraNTC:: DESTINATION ${package_dir})

if(WIN32)
  set(foreign_headers PATTERN "posix" EXCLUDE)
  string(REGEX MATCH "^[0-9]+" KESRANTC_GCC_MAJOR ${CMAKE_CXX_COMPILER_VERSION})
  configure_file(cmake/BuiltWith.h.in BuiltWith.h @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/BuiltWith.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KesraNTC/platform COMPONENT headers)
endif()
# A component of its own, so that the headers can be looked at without building anything.
install(DIRECTORY KesraNTC DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT headers FILES_MATCHING PATTERN "*.h"
  PATTERN "private" EXCLUDE ${foreign_headers})

write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KesraNTCConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  cmake/KesraNTCConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/KesraNTCConfigVersion.cmake
  DESTINATION ${package_dir})

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")

# For pkg-config: the way from its own folder back to the prefix, and what a static library needs besides.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
  OUTPUT_VARIABLE pc_prefix)
if(NOT BUILD_SHARED_LIBS)
  set(pc_flags " -DKESRANTC_STATIC")
endif()
if(WIN32)
  set(pc_libraries " -lws2_32 -loleaut32 -lole32")
elseif(NOT BUILD_SHARED_LIBS)
  set(pc_libraries " -pthread")
endif()
configure_file(cmake/KesraNTC.pc.in KesraNTC.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KesraNTC.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
