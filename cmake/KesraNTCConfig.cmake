include(${CMAKE_CURRENT_LIST_DIR}/KesraNTCTargets.cmake)
