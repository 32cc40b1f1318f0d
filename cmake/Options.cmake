# What can be chosen, and where things go, when KesraNTC is built by itself. In a game's own build all of this is
# the game's affair.
option(BUILD_SHARED_LIBS "Build KesraNTC as a shared library" ON)
option(KESRANTC_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
option(KESRANTC_BUILD_SERVER "Build the game server and the tools (needs Asio and CLI11)" ON)
option(KESRANTC_BUILD_BENCH "Build the benchmarks (needs Google Benchmark)" OFF)
option(KESRANTC_BUILD_FUZZ "Build the libFuzzer targets (needs Clang)" OFF)
set(KESRANTC_SANITIZE "" CACHE STRING "Value for -fsanitize=, empty for none")
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# What hangs is ended by its entry, whoever forgot to give it a limit of its own.
set(DART_TESTING_TIMEOUT 300)
if(CMAKE_CROSSCOMPILING)
  # A whole program is one entry there.
  set(DART_TESTING_TIMEOUT 480)
endif()
include(CTest)
include(GNUInstallDirs)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(WIN32)
  # The DLL beside the programs that load it.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endif()
